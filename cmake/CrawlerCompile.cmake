# Without it an executable of position-independent objects is still not linked as one. It holds for a
# whole build, so a project that includes this one decides for itself.
if(crawler_top_level)
  include(CheckPIESupported)
  check_pie_supported()
endif()

# What Linux distributions ask of programs that read what others wrote: checked stacks and copies, an
# address space that differs from run to run, and tables that nothing writes to after the start.
function(crawler_harden target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong)
  # Only an optimised build has the checks, and others warn.
  set(optimised $<OR:$<CONFIG:Release>,$<CONFIG:RelWithDebInfo>,$<CONFIG:MinSizeRel>>)
  target_compile_options(${target} PRIVATE $<${optimised}:-U_FORTIFY_SOURCE>
                                           $<${optimised}:-D_FORTIFY_SOURCE=2>)
  target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now)
endfunction()

# Compiles one of this project's own targets the project's way, without touching the flags of a
# project that includes it.
function(crawler_compile target standard)
  set_target_properties(
    ${target}
    PROPERTIES CXX_STANDARD ${standard}
               CXX_STANDARD_REQUIRED ON
               CXX_EXTENSIONS OFF
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(CRAWLER_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(NOT CRAWLER_SANITIZE)
    crawler_harden(${target})
  endif()
  if(CRAWLER_BUILD_FUZZERS)
    # The fuzzer steers by what it sees executed, so everything that it tries tells.
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    target_link_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(CRAWLER_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${CRAWLER_SANITIZE}
                                             -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${CRAWLER_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
      # What a sanitizer adds hides from g++ that a value is set; an ordinary build warns in earnest.
      target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
    endif()
  endif()
endfunction()
