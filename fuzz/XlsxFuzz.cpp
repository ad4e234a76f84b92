// Workbooks. The bytes are parts, each behind a line that names it, since flipped bytes of a zip
// rarely reach the readers of its parts; what begins as a zip is one.

#include "documents/Xlsx.h"
#include "documents/ZipWriter.h"

#include "Check.h"

#include <QSet>

using namespace corvelle;

namespace {

QByteArray workbookOf(const QByteArray& bytes)
{
    if (bytes.startsWith("PK"))
        return bytes;
    ZipWriter zip(QDateTime{});
    QSet<QByteArray> names;
    for (const QByteArray& part : bytes.split('\f')) {
        const qsizetype end = part.indexOf('\n');
        const QByteArray name = part.left(end).left(100);
        if (end > 0 && names.size() < 20 && !names.contains(name)) {
            names.insert(name);
            zip.add(QString::fromUtf8(name), part.mid(end + 1));
        }
    }
    return zip.finish();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto book = Xlsx::read(workbookOf(bytesOf(data, size)));
    if (!book)
        return 0;
    check(book->names().size() <= Xlsx::mostSheets, "there are so many sheets at most");
    const SheetLimits limits{50, 7, 20};
    for (int sheet = 0; sheet < std::min<qsizetype>(5, book->names().size()); ++sheet) {
        const auto few = book->rows(sheet, limits);
        const auto many = book->rows(sheet);
        check(few || !many, "less is never harder to read");
        if (!few || !many)
            continue;
        check(few->rows.size() <= 50, "no more rows than wanted");
        check(*many == *book->rows(sheet), "a sheet is the same each time");
        for (const auto& cells : few->rows)
            check(cells.size() <= 7, "no more columns than wanted");
        check(few->isCut || *few == *many, "what isn't cut is whole");
        (void)plainText(*many);
    }
    return 0;
}
