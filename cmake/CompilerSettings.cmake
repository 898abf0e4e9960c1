# Warnings are errors in every one of our own targets; hardening is part of a release build.
add_library(wagemill_compiler_settings INTERFACE)
target_compile_options(wagemill_compiler_settings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
# g++ 12 sees overlapping copies inside std::string (GCC bug 105651) and uninitialised alternatives of std::variant
# where there are none. clang-tidy reads these options too, and does not know the first.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(wagemill_compiler_settings INTERFACE -Wno-restrict -Wno-maybe-uninitialized -Wno-unknown-warning-option)
endif()
target_include_directories(wagemill_compiler_settings INTERFACE ${PROJECT_SOURCE_DIR})

if(WAGEMILL_SANITIZE)
    target_compile_options(wagemill_compiler_settings INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                               -fno-omit-frame-pointer)
    target_link_options(wagemill_compiler_settings INTERFACE -fsanitize=address,undefined)
elseif(CMAKE_BUILD_TYPE MATCHES "^(Release|MinSizeRel)$")
    target_compile_options(wagemill_compiler_settings INTERFACE -fstack-protector-strong -D_FORTIFY_SOURCE=2
                                                               -ffunction-sections -fdata-sections)
    target_link_options(wagemill_compiler_settings INTERFACE -Wl,--gc-sections)
    if(WIN32)
        target_link_options(wagemill_compiler_settings INTERFACE -fstack-protector-strong
                                                                 -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
    else()
        include(CheckPIESupported)
        check_pie_supported()
        target_compile_options(wagemill_compiler_settings INTERFACE -fcf-protection -D_GLIBCXX_ASSERTIONS)
        target_link_options(wagemill_compiler_settings INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
    endif()
endif()
