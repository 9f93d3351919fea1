#pragma once
// The message monitor's handlers: capture on and off, the view, notes, clearing and saving the log,
// the two requests; and the small windows beside it.

namespace tv {

class KavModule;

class KavMessagesLogic {
public:
    explicit KavMessagesLogic(KavModule& module);
    void connect();
    // The window's load: an empty display, nothing unsaved, no reply awaited.
    void FormLoad();

private:
    void clear();
    void save();

    KavModule& m_;
};

}  // namespace tv
