# One place for the compiler flags every target of ours shares, and the helpers
# that make each source folder one library target with its own dependencies.

add_library(glimpso_flags INTERFACE)
add_library(glimpso::flags ALIAS glimpso_flags)
target_compile_options(glimpso_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wno-missing-field-initializers)
target_compile_definitions(glimpso_flags INTERFACE
  QT_USE_QSTRINGBUILDER QT_NO_KEYWORDS
  GLIMPSO_VERSION="${PROJECT_VERSION}")
if(GLIMPSO_SANITIZE)
  target_compile_options(glimpso_flags INTERFACE
    -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  target_link_options(glimpso_flags INTERFACE -fsanitize=address,undefined)
endif()

# glimpso_library(<name> SOURCES ... [PUBLIC ...] [PRIVATE ...])
# Makes the static library glimpso_<name> with the alias glimpso::<name>.
# Headers are included from the src/ root: #include "settings/AppSettings.h".
function(glimpso_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(glimpso_${name} STATIC ${ARG_SOURCES})
  add_library(glimpso::${name} ALIAS glimpso_${name})
  target_include_directories(glimpso_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(glimpso_${name} PUBLIC ${ARG_PUBLIC} PRIVATE glimpso_flags ${ARG_PRIVATE})
endfunction()

# glimpso_test(<name> SOURCES ... LIBS ... [PLAIN])
# A GoogleTest executable whose cases become ctest tests. Without PLAIN the test
# gets a main that builds a QApplication on the offscreen platform, so widget and
# painting code runs without a display; PLAIN uses GoogleTest's own main.
function(glimpso_test name)
  cmake_parse_arguments(ARG "PLAIN" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  if(ARG_PLAIN)
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} glimpso_flags GTest::gtest GTest::gmock GTest::gtest_main)
  else()
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} glimpso_flags GTest::gtest GTest::gmock glimpso::testmain)
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" LABELS unit)
endfunction()

# glimpso_add_folders(<folder>...): adds each folder that has a CMakeLists.txt.
# The folders themselves become configure dependencies, so a folder that gains
# its CMakeLists.txt (a merge, a new library) is picked up by the next build
# without a fresh configure.
function(glimpso_add_folders)
  foreach(folder IN LISTS ARGN)
    if(NOT IS_ABSOLUTE ${folder})
      set(folder ${CMAKE_CURRENT_SOURCE_DIR}/${folder})
    endif()
    # A folder that does not exist yet is watched through its nearest parent.
    set(watched ${folder})
    while(NOT IS_DIRECTORY ${watched})
      get_filename_component(watched ${watched} DIRECTORY)
    endwhile()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${watched})
    if(EXISTS ${folder}/CMakeLists.txt)
      add_subdirectory(${folder})
    endif()
  endforeach()
endfunction()

# glimpso_fuzz_test(<name> SEEDS <dir> SOURCES <file>... [QT] [PKG <module>...]): a libFuzzer
# target built with clang by tests/support/run-fuzzer.sh, apart from this
# build, and run for 60 s under the label `fuzz`. Sources are relative to the
# project root. Without clang++ the test is not registered, and the configure
# says so.
function(glimpso_fuzz_test name)
  cmake_parse_arguments(FUZZ "QT" "SEEDS" "SOURCES;PKG" ${ARGN})
  find_program(GLIMPSO_CLANGXX NAMES clang++-14 clang++)
  if(NOT GLIMPSO_CLANGXX)
    message(WARNING "clang++ not found: the fuzz test ${name} is not registered")
    return()
  endif()
  list(TRANSFORM FUZZ_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/)
  set(qt_flag)
  if(FUZZ_QT)
    set(qt_flag --qt)
  endif()
  if(FUZZ_PKG)
    list(JOIN FUZZ_PKG " " modules)
    list(APPEND qt_flag --pkg "${modules}")
  endif()
  add_test(NAME ${name}
    COMMAND ${PROJECT_SOURCE_DIR}/tests/support/run-fuzzer.sh ${CMAKE_CURRENT_BINARY_DIR}/${name} 60
            ${FUZZ_SEEDS} ${name} ${qt_flag} ${FUZZ_SOURCES})
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "CLANGXX=${GLIMPSO_CLANGXX}" LABELS fuzz TIMEOUT 300)
endfunction()

# The application (glimpso-app) and the modules it loads when first needed lie
# in one folder: libexec/glimpso when installed, and the same place relative
# to the front program in the build tree.
file(RELATIVE_PATH GLIMPSO_APPLICATION_FROM_FRONT ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBEXECDIR}/glimpso)
set(GLIMPSO_APPLICATION_DIR ${PROJECT_BINARY_DIR}/src/app/${GLIMPSO_APPLICATION_FROM_FRONT})

# glimpso_module(<file name> SOURCES ... LIBS ...): a shared module the
# application loads with dlopen at its first use (heavy libraries that most
# runs never need), beside the application. Only symbols marked with default
# visibility leave it; the static libraries inside stay its own.
function(glimpso_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_library(${name} MODULE ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} glimpso_flags)
  target_link_options(${name} PRIVATE -Wl,--exclude-libs,ALL -Wl,--no-undefined)
  set_target_properties(${name} PROPERTIES
    PREFIX "" CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LIBRARY_OUTPUT_DIRECTORY ${GLIMPSO_APPLICATION_DIR})
  install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/glimpso)
endfunction()
