// Two lines as date texts: a catalogue's column or the version note against a stamp.
#include "catalogue/DateText.h"
#include "tests/fuzz/Target.h"

using namespace korlan;
using namespace korlan::test;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view rest = Bytes(data, size);
    const std::string first = TakeLine(rest), second = TakeLine(rest);
    std::int32_t earlier = 0, later = 0;
    MayBeRefused([&] {
        CompareDates(first, second, earlier);
        CompareDates(second, first, later);
        Require(earlier == 0 || later == 0, "one of two is earlier");
    });
    Require((earlier | later | 1) == 1, "flags");
    return 0;
}
