tavrel_bench(platform global_hotkey LIVE bare SCREEN 1920x1080 USES platform/linux QT Gui)
tavrel_bench(platform input_monitor LIVE bare SCREEN 1920x1080 USES platform/linux QT Gui)
pkg_check_modules(XCB_SOAK REQUIRED IMPORTED_TARGET xcb xcb-xtest)
add_executable(input_soak input_soak.cpp)
target_link_libraries(input_soak PRIVATE tavrel::flags tavrel::platform_linux PkgConfig::XCB_SOAK Qt6::Gui)
tavrel_bench(platform capture USES platform/linux QT Gui LIVE bare SCREEN 3840x2160)

# The application that is asked, and the bus between, are those of the tests.
pkg_check_modules(DBUS REQUIRED IMPORTED_TARGET dbus-1)
set(fakes ${PROJECT_SOURCE_DIR}/tests/platform)
add_executable(bench_atspi_zoo ${fakes}/atspi_zoo.cpp ${fakes}/fake_tree.cpp)
target_include_directories(bench_atspi_zoo PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(bench_atspi_zoo PRIVATE tavrel::flags Qt6::DBus)
tavrel_bench(platform linux_elements SOURCES ${fakes}/private_bus.cpp ${fakes}/fake_tree.cpp USES platform/linux
  PRIVATE PkgConfig::DBUS)
target_include_directories(bench_platform_linux_elements PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_compile_definitions(bench_platform_linux_elements PRIVATE ATSPI_ZOO="$<TARGET_FILE:bench_atspi_zoo>")
add_dependencies(bench_platform_linux_elements bench_atspi_zoo)
