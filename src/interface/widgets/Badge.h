// The letters of a kind of file, in its colour: "XLS".
#pragma once

#include <QWidget>

namespace corvelle {

class Badge : public QWidget
{
    Q_OBJECT

public:
    Badge(const QString& letters, QWidget* parent);

    const QString& letters() const { return m_letters; }
    QSize sizeHint() const override; // with the margins

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const QString m_letters;
};

} // namespace corvelle
