// Small rules of Word's own notations: what a field's instruction means, and which character a
// symbol is. Pure.
#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace corvelle {

// The target of an instruction HYPERLINK (ECMA-376 Part 1, 17.16.5.25), "#" and a place for one in
// the document; none for another instruction.
std::optional<QString> hyperlinkTarget(QStringView instruction);

// The character that a `w:sym` shows; empty when it can't be told.
QString symbolText(const QString& font, const QString& hexadecimal);

// A property that stands for itself: true without a value, and with any but "false" and "0". Of its
// value when the element is there.
bool isOn(std::optional<QByteArrayView> value);

} // namespace corvelle
