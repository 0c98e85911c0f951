// A compiled help file, and the page of contents that such a file holds.
#include "platform/linux/desktop/CompiledHelp.h"
#include "tests/fuzz/Target.h"

using namespace korlan;
using namespace korlan::test;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(Bytes(data, size));
    int depth = -1;
    for (const HelpTopic& topic : ParseHelpContents(bytes)) {
        Require(topic.depth >= 0 && topic.depth <= depth + 1, "no topic deeper than one below the last");
        Require(topic.title.size() + topic.page.size() <= 4 * size, "no topic longer than its file");
        depth = topic.depth;
    }
    if (!bytes.starts_with("ITSF")) return 0;
    Drive().Write("KlnUpdt.chm", bytes);
    if (const auto help = ReadCompiledHelp(Drive().HostPathOf("KlnUpdt.chm")))
        Require(help->Find(help->defaultPage) != nullptr, "the first page is there");
    return 0;
}
