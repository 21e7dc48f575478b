#ifndef OUTPUT_FILE_H
#define OUTPUT_FILE_H

#include "uniqueDescriptor.h"

#include <string>

/// A file that is written once, at the end of a run, whole or not at all. A regular file keeps its
/// old contents until the new ones are complete: these go to a file beside it, which then takes its
/// name. Any other kind, such as a pipe or a device, is written in place, and so is a file that is
/// open already, such as /dev/stdout. Every call throws LinkError "PATH: reason".
class OutputFile
{
public:
    /// Finds out at the start of the run whether the file can be written, and leaves it as it is.
    explicit OutputFile(const std::string& path);

    void write(const std::string& text);

private:
    UniqueDescriptor newFileBeside(std::string& name) const;
    void replace(const std::string& text);

    std::string m_path;
    std::string m_target;    ///< m_path without symbolic links
    UniqueDescriptor m_open; ///< of a file that is written in place
};

#endif
