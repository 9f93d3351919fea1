#pragma once
// The radio the program drives: its row of the catalogue, its bus address, and the protocol object of
// its family, built afresh whenever the radio is chosen.

#include "core/Protocol.h"
#include "core/RadioCatalogue.h"

#include <QByteArray>
#include <QChar>

#include <map>
#include <memory>
#include <vector>

namespace tv {

class Common;
class CoreView;

class SelectedRadio {
public:
    SelectedRadio(Common& common, CoreView& view);

    RadioCatalogue catalogue;
    int RadioIndex = -1;
    const RadioInfo* info() const;  // the selected radio's row, or nullptr
    QChar supplier() const;         // QChar() when none
    QString model() const;          // catalogue model in upper case, "" when none

    // ---- families ----
    // A family with a link of its own gives it here; the link lives as long as this object.
    void registerFamily(QChar supplier, ProtocolFactory factory, std::shared_ptr<FamilyLink> link = nullptr);
    // The families' links, started and stopped with the core, and told of each radio chosen.
    void startFamilyLinks(ProtocolContext& context);
    void stopFamilyLinks();
    void familyChosen(QChar supplier);
    // The factory registered for a letter (empty when none).
    ProtocolFactory family(QChar supplier) const {
        auto it = factories_.find(supplier);
        return it == factories_.end() ? ProtocolFactory() : it->second;
    }
    // Selects the catalogue row and builds its family's protocol (none for a letter no family speaks).
    void choose(int index, ProtocolContext& context);
    // Forgets the radio (no row, no protocol).
    void clear();
    Protocol* protocol() const { return protocol_.get(); }
    // Counts the choices: a decoder that switched radio inside a message is told apart by it.
    int generation() const { return generation_; }
    // The family's traits; all false for a radio no family speaks.
    const ProtocolTraits& traits() const;

    // ---- the bus address ----
    // The address check: true when the text of the address field is a valid address, which becomes
    // RadioAddress; an invalid text is refused in a box and cleared.
    bool ValidID();
    QByteArray RadioAddress;  // one byte when set
    std::uint8_t address() const { return RadioAddress.isEmpty() ? 0 : std::uint8_t(RadioAddress.at(0)); }
    // The value of one or two hexadecimal digits (upper case only: any other character counts -1).
    static int DecVal(const QString& text);
    static int DigitVal(QChar c);

private:
    void retire();

    Common& common_;
    CoreView& view_;
    std::map<QChar, ProtocolFactory> factories_;
    std::map<QChar, std::shared_ptr<FamilyLink>> links_;
    std::unique_ptr<Protocol> protocol_;
    std::vector<std::unique_ptr<Protocol>> retired_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
    int generation_ = 0;
};

}  // namespace tv
