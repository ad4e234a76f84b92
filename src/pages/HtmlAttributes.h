// The attributes of a tag, and what its style says.
#pragma once

#include <QString>

#include <optional>

namespace corvelle {

// Of the attributes as they stand in the tag the first of that name, decoded; "" for one without a
// value, null for one that isn't there. Linear in the attributes.
QString htmlAttribute(QStringView attributes, QLatin1StringView name);

// A number in an attribute, held to the bounds; `otherwise` for anything else.
int htmlNumber(QStringView attributes, QLatin1StringView name, int otherwise, int least, int most);

// The style in lower case and without blanks around ":", for comparing.
QString htmlStyle(QStringView attributes);
// The word behind "name:" where a declaration begins so; empty when none does.
QStringView styleWord(QStringView style, QStringView name);

// The level of a paragraph in an office program's list, by its style: 1...100; 0 outside of one.
int wordListLevel(QStringView style);

// Whether an address would run a program instead of leading somewhere.
bool isScriptAddress(QStringView address);

// The id in an address of an item, "corvelle://item/ID"; empty for any other.
QStringView itemIdOf(QStringView address);

} // namespace corvelle
