#ifndef MODEL_FRAMES_H
#define MODEL_FRAMES_H

#include "modelTypes.h"

namespace model {

Frame readFrame(const Variable& var);
Frame writeFrame(const Variable& var);

/// Stands for a recipe block that cannot be transferred; no reply answers it.
Frame unsendableFrame(const Variable& var);

enum class ReplyClass { REJECTED, READ, ACKNOWLEDGED };

ReplyClass classifyReply(const Frame& frame, const Bytes& reply);

} // namespace model

#endif
