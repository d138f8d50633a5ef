# The window layer's toolchain: AppKit on macOS, GNUstep's AppKit elsewhere, compiled as
# Objective-C++. Defines the interface target ord8_appkit and the guard that keeps
# AppKit out of every other target.

set(ORD8_APPKIT_GUARD ${PROJECT_SOURCE_DIR}/cmake/appkit_guard)

# Every target made after this sees the guard's AppKit/AppKit.h first and fails to
# build if it includes AppKit; the window target alone opts out.
include_directories(BEFORE ${ORD8_APPKIT_GUARD})

function(ord8_allow_appkit target)
  get_target_property(dirs ${target} INCLUDE_DIRECTORIES)
  if(dirs)
    list(REMOVE_ITEM dirs ${ORD8_APPKIT_GUARD})
    set_target_properties(${target} PROPERTIES INCLUDE_DIRECTORIES "${dirs}")
  endif()
  target_link_libraries(${target} PRIVATE ord8_appkit)
endfunction()

function(ord8_find_appkit)
  add_library(ord8_appkit INTERFACE)
  if(APPLE)
    find_library(APPKIT_FRAMEWORK AppKit REQUIRED)
    find_library(FOUNDATION_FRAMEWORK Foundation REQUIRED)
    target_link_libraries(ord8_appkit INTERFACE ${APPKIT_FRAMEWORK} ${FOUNDATION_FRAMEWORK})
    return()
  endif()
  find_program(GNUSTEP_CONFIG gnustep-config)
  if(NOT GNUSTEP_CONFIG)
    message(FATAL_ERROR "The window needs GNUstep (Debian: gnustep-devel gobjc++); "
                        "bash .ci/setup installs it, or configure with -DORD8_WINDOW=OFF")
  endif()
  execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags OUTPUT_VARIABLE flags
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  execute_process(COMMAND ${GNUSTEP_CONFIG} --gui-libs OUTPUT_VARIABLE libs
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  separate_arguments(libs UNIX_COMMAND "${libs}")
  # GNUstep's headers come in as system headers, so their warnings do not fail our
  # -Werror build; only its definitions and runtime options are kept from its flags.
  set(includes)
  set(options)
  foreach(flag ${flags})
    if(flag MATCHES "^-I(.+)$")
      if(NOT CMAKE_MATCH_1 STREQUAL "." AND IS_DIRECTORY ${CMAKE_MATCH_1})
        list(APPEND includes ${CMAKE_MATCH_1})
      endif()
    elseif(flag MATCHES "^-D" OR flag MATCHES "^-f(objc|constant-string|exceptions|no-strict)")
      list(APPEND options ${flag})
    endif()
  endforeach()
  target_include_directories(ord8_appkit SYSTEM INTERFACE ${includes})
  target_compile_options(ord8_appkit INTERFACE ${options})
  target_link_libraries(ord8_appkit INTERFACE ${libs})
  set(ORD8_APPKIT_INCLUDES ${includes} PARENT_SCOPE)
  set(ORD8_APPKIT_OPTIONS ${options} PARENT_SCOPE)
endfunction()
