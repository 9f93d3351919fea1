#include "core/SelectedRadio.h"

#include "core/CoreView.h"
#include "platform/Dialogs.h"
#include "platform/EventLoop.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

SelectedRadio::SelectedRadio(Common& common, CoreView& view) : common_(common), view_(view) {}

const RadioInfo* SelectedRadio::info() const {
    if (RadioIndex < 0 || RadioIndex >= catalogue.count()) return nullptr;
    return &catalogue.at(RadioIndex);
}

QChar SelectedRadio::supplier() const {
    const RadioInfo* r = info();
    return r ? r->supplier : QChar();
}

QString SelectedRadio::model() const {
    const RadioInfo* r = info();
    return r ? r->model.toUpper() : QString();
}

void SelectedRadio::registerFamily(QChar supplier, ProtocolFactory factory, std::shared_ptr<FamilyLink> link) {
    factories_[supplier] = std::move(factory);
    if (link)
        links_[supplier] = std::move(link);
    else
        links_.erase(supplier);
}

void SelectedRadio::startFamilyLinks(ProtocolContext& context) {
    for (auto& [letter, link] : links_) link->Initialize(context);
}

void SelectedRadio::stopFamilyLinks() {
    for (auto& [letter, link] : links_) link->Terminate();
}

void SelectedRadio::familyChosen(QChar supplier) {
    for (auto& [letter, link] : links_)
        if (letter != supplier) link->OtherFamilyChosen();
}

void SelectedRadio::choose(int index, ProtocolContext& context) {
    retire();
    ++generation_;
    RadioIndex = index;
    const RadioInfo* r = info();
    if (!r) return;
    auto it = factories_.find(r->supplier);
    if (it != factories_.end() && it->second) protocol_ = it->second(context, *r);
}

void SelectedRadio::clear() {
    retire();
    ++generation_;
    RadioIndex = -1;
}

void SelectedRadio::retire() {
    if (!protocol_) return;
    // The old protocol may be the one whose decoder chose the new radio: it goes once that returns.
    retired_.push_back(std::move(protocol_));
    std::weak_ptr<int> alive = alive_;
    common_.loop().post([this, alive] {
        if (!alive.expired()) retired_.clear();
    });
}

const ProtocolTraits& SelectedRadio::traits() const {
    static const ProtocolTraits none{};
    return protocol_ ? protocol_->traits() : none;
}

// Checked for every request and reply: the same address costs a comparison, not a new array.
static void storeByte(QByteArray& a, char b) {
    if (a.size() != 1 || a.at(0) != b) a = QByteArray(1, b);
}

bool SelectedRadio::ValidID() {
    const auto setAddressByte = [this](char b) { storeByte(RadioAddress, b); };
    bool valid = false;
    Guard("KavModule.ValidID", [&] {
        const QString id = view_.addressText().trimmed();
        if (id.isEmpty()) return;
        bool ok = true;
        if (view_.decimalRadix()) {
            for (QChar c : id) ok = ok && c >= QLatin1Char('0') && c <= QLatin1Char('9');
            // Leading zeros are still a decimal number ("0255" is 255).
            QString digits = id;
            while (digits.size() > 1 && digits.startsWith(QLatin1Char('0'))) digits.remove(0, 1);
            const long v = ok && digits.size() <= 3 ? digits.toLong() : -1;
            if (v < 0 || v > 255) {
                common_.dialogs().messageBox(
                    QStringLiteral("CI-V address must be a decimal number between 0 and 255"), common_.info().title);
                view_.clearAddress();
                return;
            }
            setAddressByte(char(v));
        } else {
            for (QChar c : id) ok = ok && QStringLiteral("0123456789ABCDEFabcdef").contains(c);
            if (!ok || id.size() >= 3) {
                common_.dialogs().messageBox(
                    QStringLiteral("CI-V address must be a hexadecimal number between 0 and FF"), common_.info().title);
                view_.clearAddress();
                return;
            }
            // Lower-case digits pass the check but don't convert: the value is wrong, and stays so.
            setAddressByte(char(DecVal(id) & 0xFF));
        }
        valid = true;
    });
    return valid;
}

int SelectedRadio::DigitVal(QChar c) { return int(QStringLiteral("0123456789ABCDEF").indexOf(c)); }

int SelectedRadio::DecVal(const QString& text) {
    if (text.size() == 2) return DigitVal(text.at(0)) * 16 + DigitVal(text.at(1));
    if (text.isEmpty()) return -1;
    return DigitVal(text.at(0));
}

}  // namespace tv
