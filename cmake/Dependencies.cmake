# Everything the product links, in one place. Versions are the floor that Debian 12 offers.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus Gui Svg Widgets)
find_package(QCoro6 0.8 REQUIRED COMPONENTS Core DBus)
find_package(Qt6Keychain 0.13 REQUIRED)
find_package(simdjson 3.0 REQUIRED)
find_package(tl-expected 1.0 REQUIRED)
find_package(CURL 7.88 REQUIRED)
find_package(ZLIB REQUIRED)
find_package(ICU 72 REQUIRED COMPONENTS uc i18n)
find_package(Boost 1.74 REQUIRED)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(xcb REQUIRED IMPORTED_TARGET xcb xcb-xfixes)

if(ORBITLEDGE_DEMO_SERVICE)
    # The product links none of these.
    find_package(Qt6 6.4 REQUIRED COMPONENTS HttpServer Network Sql)
    pkg_check_modules(sodium REQUIRED IMPORTED_TARGET libsodium)
endif()
if(ORBITLEDGE_TESTS)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
endif()

set(CMAKE_AUTOMOC OFF)
