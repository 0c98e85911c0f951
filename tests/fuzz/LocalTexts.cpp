// The file of local texts, KLNLOCAL.TXT.
#include "platform/TextEncoding.h"
#include "platform/TextLibrary.h"
#include "tests/fuzz/Target.h"

using namespace korlan;
using namespace korlan::test;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Drive().Write("KORLAN/KLNLOCAL.TXT", Bytes(data, size));
    L32_Object_Create("C:\\KORLAN\\KLNLOCAL.TXT");
    for (const std::int32_t id : {0, 1, -1, 327, 991848, 2147483647}) {
        const auto text = L32_Object_GetMessage(id);
        Require(!text || IsValidUtf8(*text), "a text is UTF-8");
        Require(!text || text->size() <= 3 * size, "a text is no longer than its file");
    }
    return 0;
}
