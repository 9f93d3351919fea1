#pragma once
// The FT-1000MP family's filters: a second-IF filter, a third-IF filter and the sub receiver's, each a
// list of entries with the code the radio reports and the value its filter command takes, and the
// groups an operator starts with.

#include "core/FilterGroups.h"

namespace tv {

const FilterGroupModel& YaesuMpFilterGroups();

}  // namespace tv
