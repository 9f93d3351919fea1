#pragma once
// One radio family's receive path on virtual time, driven by a fuzzer's bytes: replies of any shape,
// time passing (reply waits ending, polls) and the operator's commands in between, so that every
// decoder meets what a broken line brings. What the program writes is handed to a check.

#include <QByteArray>
#include <QList>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace tv::fuzz {

struct FuzzModel {
    const char* name;  // the catalogue's combo name, in data/Radios.txt
    std::function<void(const QByteArray& written)> check;
};

// The first byte picks the model; the rest is a script of (op << 6 | n) bytes: 0 feeds the n bytes
// after it, 1 lets n * 25 ms pass, 2 queues a command chosen by n (a frequency from the next 3 bytes),
// 3 lets a long silence pass.
int driveRadio(const std::vector<FuzzModel>& models, const uint8_t* data, size_t size);

// Whether every byte is two BCD digits.
bool allBcd(const QByteArray& bytes);

}  // namespace tv::fuzz
