// Quiet words that lie on the canvas and take no events.
#pragma once

#include "interface/theme/Theme.h"

#include <QString>
#include <QWidget>

namespace corvelle {

// What a canvas without cards says.
class EmptyNote : public QWidget
{
public:
    explicit EmptyNote(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
};

// One line on a small surface of its own, as wide as its words.
class LineNote : public QWidget
{
public:
    enum class Tone { Quiet, Inverse };

    LineNote(Tone tone, QWidget* parent);

    void setWords(const QString& words);
    const QString& words() const { return m_words; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Tone m_tone;
    QString m_words;
};

} // namespace corvelle
