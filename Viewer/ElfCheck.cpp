#include "ElfCheck.h"

#include <QFile>

#include <elf.h>

#include <cstring>

namespace {

// Reads one header of type T at offset; false when the file is too short.
template <class T>
bool ReadAt(QFile& file, quint64 offset, T& value)
{
    return file.seek(static_cast<qint64>(offset)) &&
           file.read(reinterpret_cast<char*>(&value), sizeof(T)) == static_cast<qint64>(sizeof(T));
}

#if defined(__x86_64__)
const int kMachine = EM_X86_64;
#elif defined(__aarch64__)
const int kMachine = EM_AARCH64;
#else
const int kMachine = EM_NONE;  // not checked
#endif

bool Inside(quint64 offset, quint64 length, quint64 fileSize)
{
    return offset <= fileSize && length <= fileSize - offset;
}

}  // namespace

QString ElfCheck::Problem(const QString& filePath)
{
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot be read (%1)").arg(file.errorString());
    const quint64 size = static_cast<quint64>(file.size());
    Elf64_Ehdr header;
    if (!ReadAt(file, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0)
        return QStringLiteral("not an ELF file");
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || (kMachine != EM_NONE && header.e_machine != kMachine))
        return QStringLiteral("not a library for this machine");
    if (header.e_type != ET_DYN)
        return QStringLiteral("not a shared library");
    if (header.e_phentsize != sizeof(Elf64_Phdr) ||
        !Inside(header.e_phoff, quint64(header.e_phnum) * sizeof(Elf64_Phdr), size))
        return QStringLiteral("truncated: its program headers end past the file's %1 bytes").arg(size);
    for (int i = 0; i < header.e_phnum; ++i) {
        Elf64_Phdr segment;
        if (!ReadAt(file, header.e_phoff + quint64(i) * sizeof(Elf64_Phdr), segment))
            return QStringLiteral("truncated: program header %1 cannot be read").arg(i);
        if (segment.p_type == PT_LOAD && !Inside(segment.p_offset, segment.p_filesz, size))
            return QStringLiteral("truncated: loadable segment %1 ends at byte %2, the file has %3")
                .arg(i)
                .arg(segment.p_offset + segment.p_filesz)
                .arg(size);
    }
    if (header.e_shnum != 0 && (header.e_shentsize != sizeof(Elf64_Shdr) ||
                                !Inside(header.e_shoff, quint64(header.e_shnum) * sizeof(Elf64_Shdr), size)))
        return QStringLiteral("truncated: its section headers end past the file's %1 bytes").arg(size);
    return QString();
}
