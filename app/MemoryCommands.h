#pragma once
// The memories from the shell: export all stored memories to a file, or import a file into the store,
// with no window and no port, for backups and for memories prepared by a script.

#include <QString>

#include <cstdio>

namespace tv {

struct MemoryCommand {
    enum Kind { Export, Import } kind = Export;
    QString file;
    QString configDir;  // Tolvane.ini is read (and, on import, written) there
    QString appDir;     // Radios.txt: whether the stored radio has filter groups
};

// Runs it and returns the exit code: 0 done; 1 an import with lines that could not be read (the errors
// file's path is printed) or one that ended at a memory number that is no number; 2 a file that could
// not be read or written.
int RunMemoryCommand(const MemoryCommand& command, std::FILE* out, std::FILE* err);

}  // namespace tv
