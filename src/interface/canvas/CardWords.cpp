#include "interface/canvas/CardWords.h"

#include <QLocale>

#include <algorithm>

namespace corvelle {

Detail detailAt(double scale)
{
    // The steps at which cards are drawn are exact decimals; their scales are not.
    constexpr double tolerance = 1e-6;
    const double zoom = scale / pixelsPerPoint + tolerance;
    if (zoom >= 0.7)
        return Detail::Full;
    return zoom >= 0.42 ? Detail::Bars : Detail::Far;
}

QString countWords(int count)
{
    if (count <= 0)
        return QStringLiteral("Empty");
    if (count == 1)
        return QStringLiteral("1 item");
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(count) +
           QStringLiteral(" items");
}

Qt::TextElideMode titleElision(const QString& title)
{
    constexpr qsizetype longestExtension = 6;
    const qsizetype dot = title.lastIndexOf(u'.');
    const QStringView extension = QStringView(title).mid(dot + 1);
    const bool isExtension =
        dot > 0 && !extension.isEmpty() && extension.size() <= longestExtension &&
        std::all_of(
            extension.begin(), extension.end(), [](QChar c) { return c.isLetterOrNumber(); }) &&
        std::any_of(extension.begin(), extension.end(), [](QChar c) { return c.isLetter(); });
    return isExtension ? Qt::ElideMiddle : Qt::ElideRight;
}

} // namespace corvelle
