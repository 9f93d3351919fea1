#pragma once
// The receive passband lists of the three Kenwood models that have them: what each list holds, the
// codes the radio takes for a cut-off, and which lists each mode shows.

#include "core/Passband.h"

namespace tv {

const PassbandModel* TS2000Passband();
const PassbandModel* TS570Passband();
const PassbandModel* TS870Passband();

}  // namespace tv
