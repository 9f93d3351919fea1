#pragma once
// The core and the radio families without any window: the queue, the scheduler, the link's traffic and
// the radio's state on virtual time, over an in-memory serial device, with the few controls the core
// reads as plain values. What a test of the core alone needs, and all it may use.

#include "core/CommandQueue.h"
#include "core/CoreView.h"
#include "core/Hooks.h"
#include "core/KavComm.h"
#include "core/RadioLink.h"
#include "core/RadioState.h"
#include "core/SelectedRadio.h"
#include "coresupport/Recording.h"
#include "platform/Dialogs.h"
#include "platform/FakeSerialDevice.h"
#include "platform/SettingsStore.h"
#include "platform/SimEventLoop.h"
#include "services/Common.h"

#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace tv::test {

// The controls the core reads, as values a test sets; the monitor as a list of lines.
struct PlainView : CoreView {
    struct Line {
        QString prefix, decimal, hex, ascii;
    };
    QString pollInterval = QStringLiteral("200");
    QString address, controlFolder;
    bool split = false, dual = false;
    bool decimal = false, interrogation = true, modeFilters = false, capture = true;
    std::vector<Line> lines;
    QString awaited;
    int portUnavailable = 0;
    QString note;  // waiting to go between two messages when not empty

    QString pollIntervalText() const override { return pollInterval; }
    QString addressText() const override { return address; }
    void clearAddress() override { address.clear(); }
    bool decimalRadix() const override { return decimal; }
    bool interrogationEnabled() const override { return interrogation; }
    bool modeFiltersEnabled() const override { return modeFilters; }
    QString controlFolderText() const override { return controlFolder; }
    bool splitChecked() const override { return split; }
    bool dualChecked() const override { return dual; }
    bool captureEnabled() const override { return capture; }
    void DisplayLine(const QString& p, const QString& d, const QString& h, const QString& a) override {
        lines.push_back({p, d, h, a});
    }
    bool takePendingNote(QString* text) override {
        if (note.isEmpty()) return false;
        *text = note;
        note.clear();
        return true;
    }
    void showAwaitedReply(const QString& text) override { awaited = text; }
    void showPortUnavailable() override { ++portUnavailable; }
};

class CoreRig {
public:
    // A few radios of each family by default; any catalogue text may be given.
    explicit CoreRig(const QString& catalogue = QString());
    ~CoreRig();

    // Chooses the catalogue's radio, builds its family's protocol, opens port 1 and starts the scheduler.
    void withRadio(const QString& name, const QString& address = QString());
    // The queued records' command names, oldest first.
    QStringList queued() const;
    // What the program wrote since the last call.
    QByteArray sent();
    // Bytes from the radio, delivered as the port would.
    void wire(const QByteArray& bytes);
    // The next regular tick (the timer's interval), and what it wrote.
    QByteArray tick();
    // Records what the queue asks of a family instead of sending it (before withRadio).
    Recording& record(QChar supplier);
    // The text of the log so far.
    QString log() const;

    QTemporaryDir dir;
    SimEventLoop loop;
    SettingsStore settings;
    ScriptedDialogs dialogs;
    Common common;
    PlainView view;
    UpperHooks hooks;
    FakeSerialDevice* serial = nullptr;
    KavComm comm;
    RadioState state;
    RadioLink link;
    CommandQueue queue;
    SelectedRadio radio;
    ProtocolContext context{queue, state, link, radio, view, common, hooks};
    std::vector<std::unique_ptr<Recording>> recordings;
};

}  // namespace tv::test
