#ifndef RECIPE_UPLOAD_H
#define RECIPE_UPLOAD_H

#include <QByteArray>

/// Copies the reply to the recipe block in flight into the host's recipe buffer, over the staged
/// variables that the block was merged from, and reports each word. Skips what the set, shortened
/// meanwhile, no longer holds, and what would lie before the buffer.
void distributeRecipeUpload(const QByteArray& reply, int dataStart);

#endif
