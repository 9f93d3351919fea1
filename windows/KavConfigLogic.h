#pragma once
// The configuration window's handlers for its "General" and "Com" tabs. Every control acts the moment
// it changes: there is no apply step. Closing the window only hides it.

namespace tv {

class KavModule;
class KavComm;

class KavConfigLogic {
public:
    KavConfigLogic(KavModule& module, KavComm& comm);
    void connect();

private:
    void defaultAddressDblClick();
    void interrogationClick();
    void radioFolderSelect();
    void browserSelect();
    void setPollControlsEnabled();

    KavModule& m_;
    KavComm& comm_;
};

}  // namespace tv
