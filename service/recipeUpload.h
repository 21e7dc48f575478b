#ifndef RECIPE_UPLOAD_H
#define RECIPE_UPLOAD_H

#include <QByteArray>

/// Copies the reply of the recipe block in flight to the host's recipe buffer, each staged variable
/// of the block to its own place, and reports each word. Skips variables that a newer, shorter set
/// no longer has, and words before the buffer's start.
void distributeRecipeUpload(const QByteArray& reply, int dataStart);

#endif
