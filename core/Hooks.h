#pragma once
// Steps that the core's start-up, bring-up and shutdown hand to the layers above, at their places in
// the order those require (bands, devices, memories, sequences, the suite link, the filter models).
// A step has one owner, who wires it. What several layers follow (the radio's frequency, mode, meter
// ...) is not a hook: it is a signal of RadioState. A hook marked required must be wired before the
// program starts: Program checks that and reports every one that isn't, instead of a silent step.

#include <QString>
#include <QStringList>

#include <functional>
#include <utility>
#include <vector>

namespace tv {

class HookBase {
public:
    HookBase(std::vector<HookBase*>& all, const char* name, bool required) : name_(name), required_(required) {
        all.push_back(this);
    }
    HookBase(const HookBase&) = delete;
    HookBase& operator=(const HookBase&) = delete;
    virtual ~HookBase() = default;
    const char* name() const { return name_; }
    bool required() const { return required_; }
    // A feature that comes with a configuration (memories, devices ...) marks its steps required.
    void setRequired(bool on) { required_ = on; }
    virtual bool wired() const = 0;

private:
    const char* name_;
    bool required_;
};

template <class Signature>
class Hook;

template <class R, class... A>
class Hook<R(A...)> : public HookBase {
public:
    using HookBase::HookBase;
    Hook& operator=(std::function<R(A...)> f) {
        f_ = std::move(f);
        return *this;
    }
    bool wired() const override { return bool(f_); }
    explicit operator bool() const { return wired(); }
    // An unwired step does nothing (and answers a default value): the start-up check has said so.
    R operator()(A... a) const {
        if (!f_) return R();
        return f_(std::forward<A>(a)...);
    }

private:
    std::function<R(A...)> f_;
};

struct UpperHooks {
    UpperHooks() = default;
    UpperHooks(const UpperHooks&) = delete;
    UpperHooks& operator=(const UpperHooks&) = delete;

    // The names of required steps that nobody wired.
    QStringList missing() const {
        QStringList out;
        for (const HookBase* h : all_)
            if (h->required() && !h->wired()) out << QString::fromLatin1(h->name());
        return out;
    }

private:
    std::vector<HookBase*> all_;

public:
    // ---- start-up and shutdown ----
    Hook<void()> InitializeBands{all_, "InitializeBands", true};
    Hook<void()> SaveBandMemories{all_, "SaveBandMemories", true};
    Hook<void()> SaveAutoRepeatRate{all_, "SaveAutoRepeatRate", true};
    Hook<void()> LoadUserSequences{all_, "LoadUserSequences", true};
    Hook<void()> SaveUserSequences{all_, "SaveUserSequences", true};
    Hook<void()> DDEInitialize{all_, "DDEInitialize", true};
    Hook<void()> DDETerminate{all_, "DDETerminate", true};
    Hook<void()> UpdateWindow{all_, "UpdateWindow", true};
    Hook<void(bool)> ShowMemoryBanks{all_, "ShowMemoryBanks", true};
    Hook<void()> UpdateMemoryNotesDisplay{all_, "UpdateMemoryNotesDisplay", true};
    Hook<void()> InitializeDeviceGrids{all_, "InitializeDeviceGrids", true};
    Hook<void()> LoadDevices{all_, "LoadDevices", true};
    Hook<void()> SaveDevices{all_, "SaveDevices", true};
    Hook<void()> InitializeMultiXcvr{all_, "InitializeMultiXcvr", true};
    Hook<void()> SaveMultiSettings{all_, "SaveMultiSettings", true};
    // Unsaved filter group changes at shutdown: asked, and saved on yes.
    Hook<bool()> FilterGroupChangesUnsaved{all_, "FilterGroupChangesUnsaved", false};
    Hook<void()> SaveFilterGroupData{all_, "SaveFilterGroupData", false};

    // ---- bring-up of a radio ----
    Hook<void()> LoadMemories{all_, "LoadMemories", true};
    Hook<void()> InitializeFilterSettings{all_, "InitializeFilterSettings", true};
    // The Wide/Narrow/Normal groups of the radios whose mode commands carry them.
    Hook<void()> InitializeIcomFilterSettings{all_, "InitializeIcomFilterSettings", true};
    Hook<void()> SetCurrentMemoryBank{all_, "SetCurrentMemoryBank", true};
    Hook<void()> ResetModeTables{all_, "ResetModeTables", true};
    Hook<void()> LoadSMeterData{all_, "LoadSMeterData", true};
    Hook<void(const QString&)> SetSMeter{all_, "SetSMeter", true};
    Hook<void(bool)> SetFilterFrameVisibility{all_, "SetFilterFrameVisibility", true};

    // ---- transceivers, addresses ----
    // Chooses a transceiver for the frequency; true when it switched to another one.
    Hook<bool(double)> SelectMultiXcvr{all_, "SelectMultiXcvr", true};
    // The operator chose transceiver 0..2 by its button.
    Hook<void(int)> SelectMultiXcvrByIndex{all_, "SelectMultiXcvrByIndex", true};
    // Converts the multi-radio address fields to hexadecimal (true) or decimal (false).
    Hook<void(bool)> ConvertMultiAddresses{all_, "ConvertMultiAddresses", true};
    // A radio whose traits hold a switch to another transceiver until it is released from computer
    // control calls this when it has been: a switch that waited is carried out now (true), and what
    // is left of the message belongs to the radio just left.
    Hook<void()> ResetControlFolderErrorFlag{all_, "ResetControlFolderErrorFlag", false};

    // ---- user command sequences, for the keys and the suite link ----
    // By button (0..7, the bank on view decides), by name, and one command outside any sequence.
    Hook<void(int)> ActivateSequence{all_, "ActivateSequence", true};
    Hook<void(const QString&)> ExecuteNamedSequence{all_, "ExecuteNamedSequence", true};
    Hook<void(const QString&)> ExecuteCommand{all_, "ExecuteCommand", true};
};

}  // namespace tv
