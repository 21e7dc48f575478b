#ifndef QT_RECORDS_H
#define QT_RECORDS_H

#include "modelTypes.h"
#include "quorvane_ka_kb_plc.h"

// The model's plain records as the driver's, and back.

namespace model {

QString qtText(const std::string& text);
std::string plainText(const QString& text);

KEY_ADDRESS qtKey(const Key& key);
_RCP_VAR_PRO qtRecord(const RecipeRecord& record);
Frame plainFrame(const FRAME_PRO& frame);

} // namespace model

#endif
