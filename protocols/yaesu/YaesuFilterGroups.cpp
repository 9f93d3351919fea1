#include "protocols/yaesu/YaesuFilterGroups.h"

#include <iterator>

namespace tv {

namespace {

FilterGroupModel makeMpModel() {
    FilterGroupModel m;
    m.frameCaption = QStringLiteral("Yaesu FT1000MP and Mark V");
    // The radio reports "through" first; its command takes the widest value last.
    m.lists[0] = {{QStringLiteral("thru"), 0, 4},
                  {QStringLiteral("2.4k"), 1, 0},
                  {QStringLiteral("2.0k"), 2, 1},
                  {QStringLiteral("500"), 3, 2},
                  {QStringLiteral("250"), 4, 3}};
    m.lists[1] = {{QStringLiteral("6.0k"), 0, 4},
                  {QStringLiteral("2.4k"), 1, 0},
                  {QStringLiteral("2.0k"), 2, 1},
                  {QStringLiteral("500"), 3, 2},
                  {QStringLiteral("250"), 4, 3}};
    // The sub receiver's values carry bit 7, which tells them from the main receiver's.
    m.lists[2] = {
        {QStringLiteral("6.0k"), 0, 132}, {QStringLiteral("2.4k"), 1, 128}, {QStringLiteral("500"), 3, 130}};
    struct Row {
        const char *name, *mode, *first, *second, *sub;
    };
    static constexpr Row kDefaults[] = {
        {"Wide", "SSB", "2.4k", "2.4k", "2.4k"},   {"Wide", "CW", "2.4k", "2.4k", "2.4k"},
        {"Wide", "RTTY", "2.4k", "2.4k", "2.4k"},  {"Wide", "FM", "thru", "6.0k", "6.0k"},
        {"Wide", "AM", "thru", "6.0k", "6.0k"},    {"Wide", "PKT", "2.4k", "2.4k", "2.4k"},
        {"Narrow", "SSB", "2.4k", "2.4k", "2.4k"}, {"Narrow", "CW", "500", "2.4k", "2.4k"},
        {"Narrow", "RTTY", "500", "2.4k", "2.4k"}, {"Narrow", "FM", "thru", "6.0k", "2.4k"},
        {"Narrow", "AM", "2.4k", "2.4k", "2.4k"},  {"Narrow", "PKT", "500", "2.4k", "2.4k"}};
    static_assert(std::size(kDefaults) == 12, "two groups for each of six mode families");
    for (const Row& r : kDefaults)
        m.defaults.push_back({QString::fromLatin1(r.name), QString::fromLatin1(r.mode),
                              QString::fromLatin1(r.first), QString::fromLatin1(r.second),
                              QString::fromLatin1(r.sub)});
    return m;
}

}  // namespace

const FilterGroupModel& YaesuMpFilterGroups() {
    static const FilterGroupModel model = makeMpModel();
    return model;
}

}  // namespace tv
