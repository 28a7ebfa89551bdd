#ifndef ELFCHECK_H
#define ELFCHECK_H

#include <QString>

// Tells whether a file is a complete ELF shared library before anybody maps
// it: the dynamic loader trusts the headers, and a truncated library (a
// copy that broke off) makes it touch pages past the end of the file, which
// kills the process with a bus error. Reads the file only; never throws.
class ElfCheck {
public:
    // "" when the file is a shared library of this machine whose headers and
    // loadable segments all lie inside the file; otherwise the reason in
    // words ("not an ELF file", "truncated: segment 2 ends at byte ...").
    static QString Problem(const QString& filePath);
};

#endif
