// Two lines as date texts: a catalogue's column or the version note against a stamp.
#include "catalogue/DateText.h"
#include "tests/fuzz/Target.h"

using namespace korlan;
using namespace korlan::test;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view rest = Bytes(data, size);
    const std::string first = TakeLine(rest), second = TakeLine(rest);
    MayBeRefused([&] { DiffersBeforeSeconds(first, second); });
    MayBeRefused([&] { Require(!IsEarlier(first, second) || !IsEarlier(second, first), "one of two is earlier"); });
    std::int32_t result = 0;
    MayBeRefused([&] { CompareDates(first, second, result); });
    Require(result == 0 || result == 1, "a flag");
    return 0;
}
