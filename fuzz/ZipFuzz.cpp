// Zip archives: what is listed is read or refused within its limits, whole or in pieces alike.

#include "documents/ZipArchive.h"

#include "Check.h"

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const ZipArchive archive(bytesOf(data, size));
    for (const QString& name : archive.names()) {
        const auto entry = archive.entry(name);
        check(entry.has_value(), "what is listed is there");
        if (entry->size > 1 << 20)
            continue;
        const auto whole = archive.read(name);
        const ByteSource source = archive.source(name);
        check(!whole || source, "what is read whole can be read in pieces");
        const auto head = archive.read(name, 10);
        check(!whole || (head && whole->startsWith(*head)), "a limit gives the beginning");
        if (!whole)
            continue;
        QByteArray pieces, piece(37, '\0');
        qsizetype count = 0;
        while ((count = source(piece.data(), piece.size())) > 0)
            pieces += piece.first(count);
        check(count == 0 && pieces == *whole, "pieces make the whole");
    }
    return 0;
}
