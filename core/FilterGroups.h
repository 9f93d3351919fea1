#pragma once
// Named filter groups of the radios that have several independent filter selections: what each of the
// three filter lists holds (with the code the radio reports for an entry and the value a command sends),
// and the groups that tie a name and a mode family to one entry of each list. A family that has such
// radios publishes one of these per model; the window edits the groups and applies them without knowing
// the model. Beside it, the group file: one group a line, its five fields separated by ",".

#include <QString>

#include <array>
#include <vector>

namespace tv {

struct FilterChoice {
    QString item;  // as the list shows it
    int status;    // the code the radio reports for it
    int command;   // the value a filter command sends for it
};

// Name, mode family ("SSB", "CW" ...), then the entries of the three lists.
using FilterGroupRow = std::array<QString, 5>;
enum FilterGroupColumn { GroupName = 0, GroupMode = 1, GroupFirst = 2, GroupSecond = 3, GroupSub = 4 };

struct FilterGroupModel {
    QString frameCaption;                            // the caption of the group editor's frame
    std::array<std::vector<FilterChoice>, 3> lists;  // by filter selector 0, 1, 2
    std::vector<FilterGroupRow> defaults;            // the groups before any file is read
};

// What the radio reports of its filters with a frequency read: the code of each list (-1 where the
// read carries none), and whether the mode changed with this read (the new mode then brings its own
// group, and the codes, which belong to the old one, are not followed).
struct FilterStatus {
    bool modeChanged = false;
    std::array<int, 3> codes{-1, -1, -1};
};

// The group file's text to rows. A line with fewer fields leaves the last columns empty; a field past
// the fifth (a name with a comma in it) is dropped. Blank lines make no row.
std::vector<FilterGroupRow> ParseFilterGroupText(const QString& text);
// Rows to the file's text, one line each, in table order.
QString FormatFilterGroupText(const std::vector<FilterGroupRow>& rows);

// The index of the entry with this status code in a list, -1 when none has it.
int FilterChoiceByStatus(const std::vector<FilterChoice>& list, int status);

}  // namespace tv
