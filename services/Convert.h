#pragma once
// Conversions with the runtime's rules: Val never fails; the C* conversions raise TvError
// (13 type mismatch for text that isn't a number, 6 overflow out of range) — callers run inside Guard.

#include <QString>

#include <cstdint>

namespace tv {

// The leading number of a text: blanks skipped, optional sign, digits, one '.', an exponent; "&H1F"
// as hexadecimal. 0 when the text doesn't start with a number. Never raises.
double Val(const QString& text);
// Whole numbers, rounded half to even as the runtime does; raise 13 on non-numeric text, 6 on overflow.
std::int16_t CInt(const QString& text);
std::int16_t CInt(double value);
std::int32_t CLng(const QString& text);
std::int32_t CLng(double value);
double CDbl(const QString& text);
[[noreturn]] void throw_subscript();
// Raises 9 "Subscript out of range" unless lo <= i <= hi.
inline void CheckSubscript(long long i, long long lo, long long hi) {
    if (i < lo || i > hi) throw_subscript();
}

}  // namespace tv
