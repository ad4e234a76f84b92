// The field for finding words in what is open, with how many there are and the way from one to the
// next.
//
// It has no surface of its own: it stands in a row of what is open, where it hides nothing of what
// it finds.
#pragma once

#include "interface/widgets/GlassPanel.h"

class QLabel;
class QLineEdit;

namespace corvelle {

class FindBar : public GlassPanel
{
    Q_OBJECT

public:
    // `where` it finds: "Find in the page".
    FindBar(const QString& where, QWidget* parent);

    void setWhere(const QString& where);
    // As wide as it likes to be, or as there is room; its buttons and the count always have theirs.
    void fit(int room);
    // Shows it with the keyboard in its field, what stands there selected.
    void open();
    void setWords(const QString& words);
    QString words() const;
    // `current` counts from 0; -1: none. A search that goes on may find more.
    enum class Search : unsigned char { Ended, GoesOn };
    void setCount(int current, int count, Search search = Search::Ended);
    QString countWords() const;

signals:
    void wordsChanged(const QString& words);
    void stepWanted(int step);
    void closeWanted();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QLineEdit* m_field;
    QLabel* m_count;
    int m_wanted = 0; // its width
};

} // namespace corvelle
