#include "app/LaunchOptions.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int leastSide = 200, greatestSide = 16384; // of a window that --size may ask for

std::optional<QString> operand(const QStringList& arguments, const QString& name)
{
    const qsizetype at = arguments.indexOf(name);
    if (at < 0 || at + 1 >= arguments.size())
        return std::nullopt;
    return arguments[at + 1];
}

std::optional<QSize> sizeFrom(const QString& text)
{
    const QStringList sides = text.split(u'x');
    if (sides.size() != 2)
        return std::nullopt;
    bool widthFine = false, heightFine = false;
    const int width = sides[0].toInt(&widthFine), height = sides[1].toInt(&heightFine);
    const auto fits = [](int side) { return side >= leastSide && side <= greatestSide; };
    if (!widthFine || !heightFine || !fits(width) || !fits(height))
        return std::nullopt;
    return QSize(width, height);
}

} // namespace

LaunchOptions readLaunchOptions(
    const QStringList& arguments, const std::function<QString(const char*)>& environment)
{
    LaunchOptions options;
    options.library = environment("CORVELLE_LIBRARY");
    options.libraryIsSet = !options.library.isNull();
    options.driverFile = environment("CORVELLE_DRIVER");
    options.driverIsSet = !options.driverFile.isNull();
    options.background = environment("CORVELLE_BACKGROUND") == u"1";
    bool isNumber = false;
    const double probe = environment("CORVELLE_PROBE_MS").toDouble(&isNumber);
    if (isNumber && probe > 0)
        options.probeMs = probe;

    options.plate = arguments.contains(u"--plate"_s);
    options.folder = operand(arguments, u"--folder"_s).value_or(QString());
    if (const auto size = operand(arguments, u"--size"_s))
        options.size = sizeFrom(*size);
    for (const QString& argument : arguments)
        if (const QString id = itemOfAddress(argument); !id.isEmpty())
            options.itemID = id;
    return options;
}

QString itemOfAddress(const QString& address)
{
    const QUrl url(address);
    if (url.scheme() != u"corvelle" || url.host() != u"item")
        return {};
    return url.path().section(u'/', 1, 1);
}

} // namespace corvelle
