# Headers of Qt and of the standard library that most files read, compiled once for everybody.
#
# Parsing them is most of what a file costs: 1.4 of 2.2 s for an average one. There are as few of these as the
# compiler's rules permit. A file may be compiled with definitions that its precompiled header lacks, provided that the
# header never asked for them. Qt Core, Gui and Widgets do not ask which modules are linked, so one serves all logic and
# one all widgets; Qt Test does, which is why tavrel_test_support answers alike for every test.
#
#   core      the modules of logic; Widgets never reach them this way
#   widgets   the modules with windows
#   test      all tests
#
# Only what is stable and wanted by many belongs here: the heavier one gets, the longer each file takes to load it, and
# <QtCore> as a whole costs more than it saves. Every file still includes what it uses: ./dev check builds without.

option(TAVREL_PCH "Build with precompiled headers" ON)

set(TAVREL_PCH_CORE
  <QCoreApplication> <QDateTime> <QDir> <QElapsedTimer> <QFile> <QFileInfo> <QHash> <QJsonArray> <QJsonDocument>
  <QJsonObject> <QList> <QLoggingCategory> <QPointer> <QRegularExpression> <QSet> <QStringList> <QTimer> <QUrl>
  <QColor> <QFontMetricsF> <QGuiApplication> <QImage> <QKeyEvent> <QMouseEvent> <QPainter> <QPainterPath> <QScreen>
  <QWindow>
  <algorithm> <array> <chrono> <cmath> <functional> <memory> <mutex> <optional> <thread> <utility> <vector>)
set(TAVREL_PCH_WIDGETS ${TAVREL_PCH_CORE}
  <QAbstractButton> <QAccessibleWidget> <QApplication> <QFrame> <QHBoxLayout> <QLabel> <QLineEdit> <QToolButton>
  <QVBoxLayout> <QWidget>)
set(TAVREL_PCH_TEST <QSignalSpy> <QTemporaryDir> <QTest>)

# Compiles the header once; `name` carries it for others.
function(tavrel_precompiled_header name)
  cmake_parse_arguments(P "" "" "HEADERS;LIBRARIES" ${ARGN})
  add_library(tavrel_pch_${name} OBJECT ${PROJECT_SOURCE_DIR}/cmake/pch/carrier.cpp)
  set_target_properties(tavrel_pch_${name} PROPERTIES AUTOMOC OFF AUTORCC OFF)
  target_link_libraries(tavrel_pch_${name} PRIVATE tavrel::flags ${P_LIBRARIES})
  target_precompile_headers(tavrel_pch_${name} PRIVATE ${P_HEADERS})
endfunction()

if(TAVREL_PCH)
  tavrel_precompiled_header(core HEADERS ${TAVREL_PCH_CORE} LIBRARIES Qt6::Core Qt6::Gui)
  tavrel_precompiled_header(widgets HEADERS ${TAVREL_PCH_WIDGETS} LIBRARIES Qt6::Widgets)
  if(TAVREL_BUILD_TESTS)
    tavrel_precompiled_header(test HEADERS ${TAVREL_PCH_WIDGETS} ${TAVREL_PCH_TEST}
      LIBRARIES tavrel_test_support Qt6::Widgets Qt6::Network)
  endif()
endif()

# tavrel_use_precompiled(target core|widgets|test)
function(tavrel_use_precompiled target name)
  if(TAVREL_PCH)
    target_precompile_headers(${target} REUSE_FROM tavrel_pch_${name})
    # Lets the compiler cache see past the header when it compares preprocessed sources.
    target_compile_options(${target} PRIVATE -fpch-preprocess)
  endif()
endfunction()

# Sources that need more optimisation than the rest. The compiler cannot mix levels within a precompiled header (g++ 12
# dies of it), so they do without.
function(tavrel_optimised_sources)
  if(NOT TAVREL_SANITIZE)
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS -O3 SKIP_PRECOMPILE_HEADERS ON)
  endif()
endfunction()
