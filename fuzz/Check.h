// What a fuzz target does with the bytes, beside not crashing: say what must hold, and stop where it doesn't.
#pragma once

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

inline void check(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "It doesn't hold that %s.\n", what);
    std::abort();
}

// A copy: the sanitizer sees a read beyond its end.
inline QByteArray bytesOf(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}
