# What the Linux back end and its tests are made with.
find_package(CURL REQUIRED)
find_package(LibArchive REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)
find_package(PkgConfig REQUIRED)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)
