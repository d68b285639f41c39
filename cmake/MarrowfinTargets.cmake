# Shared build rules: warnings, sanitizers and small helpers for the folders.

add_library(marrowfin_options INTERFACE)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(marrowfin_options INTERFACE -Wall -Wextra)
  if(MARROWFIN_WERROR)
    target_compile_options(marrowfin_options INTERFACE -Werror)
  endif()
endif()
if(MARROWFIN_SANITIZE)
  string(REPLACE ";" "," _san "${MARROWFIN_SANITIZE}")
  add_compile_options(-fsanitize=${_san} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${_san})
  if("address" IN_LIST MARROWFIN_SANITIZE)
    # The standard library's own bounds checks catch what the address checks
    # cannot see: an index past the size but inside a container's capacity.
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
  endif()
endif()

if(MARROWFIN_FUZZ)
  # Everything is instrumented for coverage; only the fuzz targets link the fuzzer's main.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# Adds a folder when it has a CMakeLists.txt, so that layers can land one by one.
function(marrowfin_add_folder dir)
  if(EXISTS ${CMAKE_SOURCE_DIR}/${dir}/CMakeLists.txt)
    add_subdirectory(${CMAKE_SOURCE_DIR}/${dir} ${CMAKE_BINARY_DIR}/${dir})
  endif()
endfunction()

# marrowfin_layer(NAME SOURCES... DEPS...): one static library of a layer.
function(marrowfin_layer name)
  cmake_parse_arguments(L "" "" "SOURCES;DEPS;PRIVATE_DEPS" ${ARGN})
  add_library(${name} STATIC ${L_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/include)
  target_link_libraries(${name} PUBLIC ${L_DEPS} PRIVATE marrowfin_options ${L_PRIVATE_DEPS})
endfunction()

# marrowfin_test(NAME SOURCES... DEPS...): one GoogleTest program run by CTest;
# PREFIX goes before its test names, for programs that share test names.
function(marrowfin_test name)
  cmake_parse_arguments(T "QT" "PREFIX" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_DEPS} marrowfin_testsupport GTest::gtest GTest::gmock GTest::gtest_main marrowfin_options)
  # The shared drawings lie beside the sources unless the build names another folder (a worktree).
  set(_shared "${CMAKE_SOURCE_DIR}/../shared")
  if(MARROWFIN_SHARED_DIR)
    set(_shared "${MARROWFIN_SHARED_DIR}")
  endif()
  set(_env "MARROWFIN_SOURCE_DIR=${CMAKE_SOURCE_DIR};MARROWFIN_SHARED_DIR=${_shared}")
  if(T_QT)
    list(APPEND _env "QT_QPA_PLATFORM=offscreen")
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 TEST_PREFIX "${T_PREFIX}"
                       PROPERTIES ENVIRONMENT "${_env}" TIMEOUT 300)
endfunction()
