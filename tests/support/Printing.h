// Lets a failing check show the Qt values that it compared.
#pragma once

#include <QByteArray>
#include <QPointF>
#include <QSizeF>
#include <QString>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toStdString() << '"';
}
inline void PrintTo(const QPointF& point, std::ostream* out)
{
    *out << '(' << point.x() << ", " << point.y() << ')';
}
inline void PrintTo(const QSizeF& size, std::ostream* out)
{
    *out << size.width() << " x " << size.height();
}
