// The line above a sheet: which cell is picked, and its whole text.
#pragma once

#include <QWidget>

namespace corvelle {

class CellBar : public QWidget
{
    Q_OBJECT

public:
    explicit CellBar(QWidget* parent);

    void setCell(const QString& place, const QString& text);
    // How much of its right end something else takes.
    void setTaken(int pixels);
    // As high as the text wants in this width, up to a limit.
    int heightFor(int pixels, int most) const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_place, m_text;
    int m_taken = 0;
};

} // namespace corvelle
