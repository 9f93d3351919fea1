#pragma once
// What the core reads of the windows at the moment of use, and the few things it shows there. The
// program's windows implement it; a test of the core alone implements it with plain values.

#include <QString>

namespace tv {

class CoreView {
public:
    virtual ~CoreView() = default;

    // ---- settings the operator may change at any time ----
    virtual QString pollIntervalText() const = 0;
    virtual QString addressText() const = 0;
    virtual void clearAddress() = 0;
    virtual bool decimalRadix() const = 0;
    virtual bool interrogationEnabled() const = 0;
    virtual bool modeFiltersEnabled() const = 0;
    // The folder through which a radio driven by another program is reached.
    virtual QString controlFolderText() const = 0;
    // The split and dual boxes as they stand: a radio setting both with one command needs the other.
    virtual bool splitChecked() const = 0;
    virtual bool dualChecked() const = 0;

    // ---- the message monitor ----
    virtual bool captureEnabled() const = 0;
    virtual void DisplayLine(const QString& prefix, const QString& decimalLine, const QString& hexLine,
                             const QString& asciiLine) = 0;
    // The operator's note waiting to go between two messages; false when none.
    virtual bool takePendingNote(QString* text) = 0;
    // The monitor's caption tells which reply is awaited ("" when none is).
    virtual void showAwaitedReply(const QString& text) = 0;

    // ---- the main window ----
    // Bytes arrived while the port was not ours.
    virtual void showPortUnavailable() = 0;
};

}  // namespace tv
