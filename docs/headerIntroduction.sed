#!/bin/sed -f
# Turns the comment above the first #include into the file's description.
1,/^#include/{
    /^\/\/ Host interface/s,^,/// @file\n,
    s,^//   ,///     ,
    s,^//\($\| \),///\1,
    s,\n//\($\| \),\n///\1,
}
