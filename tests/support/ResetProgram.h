// Everything back to what it is when the process starts.
#pragma once

#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "catalogue/FileTables.h"

#include <memory>

namespace korlan {

inline void ResetProgram() {
    Settings = {};
    Tables = {};
    Flags = {};
    std::destroy_at(&frmUpdate);
    std::construct_at(&frmUpdate);
}

} // namespace korlan
