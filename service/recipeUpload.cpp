#include "recipeUpload.h"

#include "changeNotification.h"
#include "driverState.h"
#include "readMarks.h"
#include "replyBytes.h"
#include "wrapAround.h"

// First arguments of the callback for a filled word.
enum { UPLOAD_CONTEXT = 0, UPLOAD_STATION = -1 };

static void fillWord(const QByteArray& reply, qint64 at, int bufferWord)
{
    if (driver.rcpBuffer == 0 || bufferWord < 0) return;
    unsigned char* word = driver.rcpBuffer + 2 * qint64(bufferWord);
    word[0] = replyByte(reply, at + 1);
    word[1] = replyByte(reply, at);
    notifyHost(UPLOAD_CONTEXT, UPLOAD_STATION, QLatin1String("RWI"), bufferWord);
}

void distributeRecipeUpload(const QByteArray& reply, int dataStart)
{
    const QList<qint32> starts = driver.blockStartIndex;
    const int block = driver.rcpIndex;
    if (block < 0 || block >= starts.size()) return;

    const QVector<_RCP_VAR_PRO> staged = driver.rcpVarsStaged;
    const int first = starts.at(block);
    const bool last = block + 1 == starts.size();
    const bool inExchange = isReplyTakenIn();
    const int end = qMin(last ? int(staged.size()) : starts.at(block + 1), int(staged.size()));
    for (int j = first; j < end; ++j) {
        const _RCP_VAR_PRO& variable = staged.at(j);
        const int offset = wrapSub(variable.addr, staged.at(first).addr);
        for (int k = 0; k < variable.count; ++k) {
            const qint64 at = qint64(dataStart) + 2 * (qint64(offset) + k);
            fillWord(reply, at, wrapAdd(variable.bufOffset, k));
            // The callback has started the driver anew: the buffer may be another one by now.
            if (isReplyTakenIn() != inExchange) return;
        }
    }
}
