// Type libraries: a real one on Windows; elsewhere there is nothing to register with, and every call says so.
#include "platform/Component.h"

#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace korlan {
namespace {

TEST(TypeLibraries, WhatIsNoneIsRefused) {
    const test::TempDrive drive;
    drive.Write("GARBAGE.TLB", "no type library");
    for (const char* path : {"C:\\NONE.TLB", "C:\\GARBAGE.TLB", "C:\\", ""}) {
        EXPECT_FALSE(LoadAndRegisterTypeLib(path)) << path;
        EXPECT_NE(test::ErrorOf([&] { DescribeTypeLib(path); }), 0) << path;
    }
    EXPECT_FALSE(UnregisterTypeLib({"no identifier"}));
}

#ifdef _WIN32
TEST(TypeLibraries, AreRegisteredUnderTheirKeyAndTakenFromIt) {
    const test::TempDrive drive;
    std::filesystem::copy_file(KLN_TYPE_LIBRARY, drive.HostPathOf("KLWAUTO.TLB"));
    const auto registered = [] {
        wchar_t file[MAX_PATH] = {};
        DWORD size = sizeof file;
        RegGetValueW(HKEY_CLASSES_ROOT, L"TypeLib\\{6B0F2A54-7C1D-4E8A-9F35-2D41C86E70B9}\\2.3\\0\\win32", nullptr,
                     RRF_RT_REG_SZ, nullptr, file, &size);
        return std::wstring(file);
    };
    EXPECT_EQ(registered(), L"");
    EXPECT_TRUE(LoadAndRegisterTypeLib("C:\\KLWAUTO.TLB"));
    EXPECT_EQ(registered(), L"C:\\KLWAUTO.TLB");
    const TypeLibraryInfo library = DescribeTypeLib("C:\\KLWAUTO.TLB");
    EXPECT_EQ(library.identifier, "{6B0F2A54-7C1D-4E8A-9F35-2D41C86E70B9}");
    EXPECT_TRUE(library.majorVersion == 2 && library.minorVersion == 3 && library.locale == 0);
    EXPECT_TRUE(UnregisterTypeLib(library));
    EXPECT_EQ(registered(), L"");
}
#endif

} // namespace
} // namespace korlan
