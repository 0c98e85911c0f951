// A suite library that lacks all procedures but two.
#include "sdk/KlwUpdt.h"

#include <cstdlib>

int32_t E_GetVersion(void) {
    const char* other = std::getenv("KLN_SUITE_TEST_VERSION");
    return other ? std::atoi(other) : KLN_SUITE_VERSION;
}

int32_t E_SetString(const char*, const char*) {
    return 1;
}
