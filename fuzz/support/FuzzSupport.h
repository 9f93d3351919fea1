#pragma once
// What every fuzz target shares: one Qt application object for the process, and a failed property
// that ends the run as a crash, so that libFuzzer keeps the input.

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace tv::fuzz {

// Made once, before the first input; Qt's text codecs and timers want it.
void ensureApp();
// The input as Latin-1 text (every byte a character), as a file read from disk would come.
QString text(const uint8_t* data, size_t size);
// Prints what was broken and aborts.
[[noreturn]] void fail(const char* what, const QByteArray& detail = QByteArray());

}  // namespace tv::fuzz

#define FUZZ_CHECK(cond, detail) \
    do {                         \
        if (!(cond)) ::tv::fuzz::fail(#cond, (detail)); \
    } while (0)
