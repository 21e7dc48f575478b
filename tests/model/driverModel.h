#ifndef DRIVER_MODEL_H
#define DRIVER_MODEL_H

#include "modelCache.h"
#include "modelFrames.h"
#include "modelQueue.h"
#include "modelRecipes.h"
#include "modelTypes.h"

#include <list>
#include <optional>

namespace model {

/// The driver as its host knows it, call for call, written as plainly as possible.
class DriverModel
{
public:
    void setCallback(bool set)
    {
        m_callbackSet = set;
    }

    /// Null `shared`: no flags; null `recipe`: no buffer; null `text`: no property text.
    int initProperty(HostMemory* flags, Bytes* recipe, const std::string* text);

    int addrMerge(const std::vector<Key>& keys);
    int addConditionRead(const Key& key, int varId);
    int setRcpAddress(const std::vector<RecipeRecord>& records);

    /// Nothing when there is nothing to send.
    std::optional<Frame> getSendFrame();
    int dealRcvFrame(const Bytes& reply, std::string& errorText);

    /// Whether a reply is awaited.
    bool isFramePending() const
    {
        return m_pending.has_value();
    }

    Bytes getData(int station, const std::string& area, int addr, int count);
    int setData(int station, const std::string& area, int addr, const Bytes& values, int varId);

    /// What the callback was told since the last call of this function.
    std::vector<Notification> takeNotifications();

private:
    enum class Kind { IDLE, WRITE, ONE_SHOT, CYCLIC, DOWNLOAD, UPLOAD };

    bool flagRaised(bool upload) const;
    void lowerFlag(bool upload);
    void chooseWork();
    void startRecipeBlock(Kind kind);
    void buildAgain();
    void startNormalWork();
    void startWrite();
    void startOneShot();
    void startCyclic();
    void countIdle() const;

    int accept(ReplyClass replyClass, const Bytes& reply);
    int reject(const Bytes& reply, std::string& errorText);
    void countGiveUp() const;
    void finish();
    void finishOneShot();
    void finishCyclic();
    void finishRecipe(bool upload);
    void takeRead(const Bytes& reply);

    void tell(int context, int station, const std::string& name, int addr);
    Cache::Changed teller();

    bool m_callbackSet = false;
    int m_context = 0;
    int m_localOnly = 0;
    int m_retryLimit = 0;
    int m_mergeLimit = 0;
    HostMemory* m_flags = nullptr;
    Bytes* m_recipeBuffer = nullptr;

    std::list<Variable> m_reads;
    CappedQueue m_writes{{Branch::WRITE_REPLACED, Branch::WRITES_FULL,
                          Branch::WRITE_APPENDED_BESIDE_OLDEST, Branch::WRITE_APPENDED}};
    CappedQueue m_oneShots{{Branch::ONE_SHOT_REPLACED, Branch::ONE_SHOTS_FULL,
                            Branch::ONE_SHOT_APPENDED_BESIDE_OLDEST, Branch::ONE_SHOT_APPENDED}};
    Variable m_lastOneShot;
    Recipes m_recipes;
    Cache m_cache;

    Kind m_kind = Kind::IDLE;
    Variable m_current;
    std::optional<Frame> m_pending;
    int m_priorityCount = 0;
    int m_failCount = 0;
    bool m_failed = false;

    std::vector<Notification> m_notifications;
};

} // namespace model

#endif
