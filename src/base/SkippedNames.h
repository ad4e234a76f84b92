// Names on disk that the library passes over.
#pragma once

#include <QStringView>

namespace corvelle {

// A name that no scan ever reports: hidden, or one under which programs keep what they are working
// on.
bool isSkippedName(QStringView name);

// Whether a folder of this name holds generated files; IfMarked: if a file named generatedMark lies
// directly in it.
enum class Generated { No, Yes, IfMarked };
inline constexpr char generatedMark[] = "pyvenv.cfg";
Generated generatedByName(QStringView name);

} // namespace corvelle
