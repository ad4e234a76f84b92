// Whether the desktop wants dark windows.
#pragma once

#include <QObject>
#include <QVariant>

namespace corvelle {

// Asks the desktop's settings portal, and where there is none the toolkit's own palette.
// CORVELLE_APPEARANCE ("light" or "dark") wins over both. Main thread, once the application object
// exists.
class Appearance : public QObject
{
    Q_OBJECT

public:
    explicit Appearance(QObject* parent = nullptr);

    bool isDark() const { return m_isDark; }

signals:
    void changed();

private:
    void take(const QVariant& scheme);

    bool m_isDark = false;
};

} // namespace corvelle
