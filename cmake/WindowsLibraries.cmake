# What the Windows back end and its tests are made with.
enable_language(RC)
set(ZLIB_USE_STATIC_LIBS ON)
find_package(ZLIB REQUIRED)
add_compile_definitions(UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX WINVER=0x0A00 _WIN32_WINNT=0x0A00)
