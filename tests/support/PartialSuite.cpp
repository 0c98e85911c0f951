// A suite library that lacks all procedures but one.
#include "sdk/KlwUpdt.h"

int32_t E_SetString(const char*, const char*) {
    return 1;
}
