#pragma once
// The whole program on virtual time, once per fuzzing process: a TS-2000 on port 1 without polling,
// for the targets whose input reaches the program through its windows' modules.

#include "support/TestStation.h"

namespace tv::fuzz {

test::TestStation& station();

}  // namespace tv::fuzz
