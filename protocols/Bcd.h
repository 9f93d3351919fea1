#pragma once
// Packed decimal, two digits a byte, as the radios carry frequencies: least significant byte first
// (CI-V, and the Yaesu families that write a frequency from its low end) or most significant first.

#include <QByteArray>

#include <cstdint>

namespace tv {

enum class BcdOrder { LeastFirst, MostFirst };

// Two decimal digits (0..99) as one packed byte.
std::uint8_t BcdByte(int twoDigits);
// The value's last 2 x bytes decimal digits, packed in the order given.
QByteArray ToBcd(std::uint64_t value, int bytes, BcdOrder order);
// The digits of packed bytes as a number. A nibble above 9 counts as its own value in its place: no
// radio sends one, and a garbled report must still decode to something rather than fail.
std::uint64_t FromBcd(QByteArrayView bytes, BcdOrder order);

}  // namespace tv
