#include "protocols/Bcd.h"

namespace tv {

std::uint8_t BcdByte(int twoDigits) { return std::uint8_t((twoDigits / 10) * 16 + (twoDigits % 10)); }

QByteArray ToBcd(std::uint64_t value, int bytes, BcdOrder order) {
    QByteArray out(bytes, '\0');
    for (int i = 0; i < bytes; ++i) {
        const auto b = char(BcdByte(int(value % 100)));
        value /= 100;
        out[order == BcdOrder::LeastFirst ? i : bytes - 1 - i] = b;
    }
    return out;
}

std::uint64_t FromBcd(QByteArrayView bytes, BcdOrder order) {
    std::uint64_t v = 0;
    const int n = int(bytes.size());
    for (int i = 0; i < n; ++i) {
        const auto b = std::uint8_t(bytes[order == BcdOrder::MostFirst ? i : n - 1 - i]);
        v = v * 100 + std::uint64_t(b >> 4) * 10 + (b & 0x0F);
    }
    return v;
}

}  // namespace tv
