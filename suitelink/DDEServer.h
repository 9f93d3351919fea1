#pragma once
// The command endpoint: each execute string on the topic "DDEServer" is matched against the verbs and
// turned into the operations the main window uses. It also holds the live items that linked clients read.

#include <QString>

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace tv {

class DDEServerModule;
class Form;
class KavModule;
class SuiteBus;

// What the server asks of the program around it: parts that live above the suite link or in the
// program's frame. An empty one does nothing.
struct SuiteActions {
    // Closes the program from its timer, so that the reply to "shutdown" leaves first.
    std::function<void()> RequestShutdown;
    std::function<void(const QString& name)> ExecuteNamedSequence;
    std::function<void(int index)> ExecuteSequence;
    std::function<void(const QString& text)> ExecuteCommand;
    // The program's open windows, in the order they were loaded.
    std::function<std::vector<Form*>()> OpenWindows;
};

class DDEServer {
public:
    static constexpr int kCascadeStep = 25;

    DDEServer(KavModule& module, DDEServerModule& owner, SuiteBus& bus);

    // Cancel: 0 accepts, -1 refuses. A command that isn't understood leaves it as it came.
    void LinkExecute(const QString& CmdStr, std::int16_t& Cancel);
    // Every window into view, cascaded from offset.
    void ResetWindows(std::int32_t offset);

    // ---- items ----
    // Sets an item's text; linked clients are told when the text differs from the last one.
    void SetItem(const QString& item, const QString& text);
    // Null for an item the topic doesn't have.
    QString Item(const QString& item) const;
    // The endpoint is published under its topic from Load to Unload.
    void Load();
    void Unload();
    bool loaded() const { return loaded_; }

    QString LinkTopic;
    int LinkMode = 0;

private:
    KavModule& m_;
    DDEServerModule& owner_;
    SuiteBus& bus_;
    bool loaded_ = false;
    std::map<QString, QString> items_;
};

}  // namespace tv
