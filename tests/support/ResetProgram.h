// Every holder of state above the platform back to what it is when the process starts.
#pragma once

#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "app/localise/UpdtFONT.h"
#include "catalogue/FileTables.h"
#include "library/ElementMerge.h"
#include "library/SearchSequence.h"
#include "transfer/CacheCleanUp.h"
#include "transfer/modZip.h"

#include <memory>

namespace korlan {

inline void ResetProgram() {
    Settings = {};
    Flags = {};
    Tables = {};
    Language = {};
    Elements = {};
    modZip = {};
    modCache = {};
    for (std::int32_t kind = kPartKind; kind <= kPadstackKind; ++kind) SequenceOf(kind) = {};
    std::destroy_at(&frmUpdate);
    std::construct_at(&frmUpdate);
}

} // namespace korlan
