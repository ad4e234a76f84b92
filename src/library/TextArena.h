// Texts that live as long as the process, packed one behind the other.
//
// The first read of a library makes hundreds of thousands of short texts that stay to the end; one
// allocation for each would cost more than reading them. A text from here is an ordinary QString to
// everybody: copying it copies a pointer, changing it makes a text of its own. One thread.
#pragma once

#include <QByteArrayView>
#include <QString>

namespace corvelle {

class TextArena
{
public:
    // Bad UTF-8 is repaired. A null view gives a null text.
    QString text(QByteArrayView utf8);

private:
    char16_t* room(qsizetype units);

    char16_t* m_next = nullptr;
    qsizetype m_left = 0;
};

} // namespace corvelle
