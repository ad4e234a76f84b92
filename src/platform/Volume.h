// Whether a volume takes "Report" and "report" for the same name.
//
// A wrong NameCase::Ignored would make one card of two files, a wrong NameCase::Kept only costs a
// little: so wherever it can't be told the answer is NameCase::Kept. Any thread.
#pragma once

#include "base/Text.h"

namespace corvelle {

// Asks with a file of our own, which is gone again afterwards. The folder must be ours: a hidden
// one.
NameCase probeNameCase(const QString& folder);

// Asks without writing: looks for something that lies in the folder under its name in the other
// case. In a folder without letters in its names, for the folder itself.
NameCase lookUpNameCase(const QString& folder);

} // namespace corvelle
