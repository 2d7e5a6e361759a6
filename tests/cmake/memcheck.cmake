# Every GoogleTest suite of the plain GCC build once more under valgrind's
# memcheck: invalid reads and writes, uses of uninitialised values, and blocks
# that nothing points to any more. The blocks that operations leave allocated
# by contract are suppressed in memcheck.supp, and nothing else is.
#
# The suites are collected when the whole directory has been read, so that
# every suite is covered wherever it is registered. Suites that link
# zt_alloc_fail bring their own operator new, on the real malloc; valgrind
# is told to leave that one in place (somalloc=nouserintercepts) and still
# sees every block through malloc and free, so no suite is left out.
# The host's valgrind cannot run a cross build's executables.
find_program(ZT_VALGRIND valgrind)
if(ZT_VALGRIND AND NOT ZT_SANITIZE AND NOT CMAKE_CROSSCOMPILING
   AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  function(zt_add_memcheck_tests)
    get_property(_zt_tests DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} PROPERTY TESTS)
    foreach(_zt_test IN LISTS _zt_tests)
      if(TARGET ${_zt_test})
        get_target_property(_zt_type ${_zt_test} TYPE)
        if(_zt_type STREQUAL "EXECUTABLE")
          # A suite may name arguments of its own for this run (a filter).
          get_target_property(_zt_args ${_zt_test} ZT_MEMCHECK_ARGS)
          if(NOT _zt_args)
            set(_zt_args "")
          endif()
          add_test(NAME memcheck_${_zt_test}
            COMMAND ${ZT_VALGRIND} --tool=memcheck --error-exitcode=1 --leak-check=full
              --errors-for-leak-kinds=definite --show-leak-kinds=definite
              --soname-synonyms=somalloc=nouserintercepts
              --suppressions=${CMAKE_CURRENT_SOURCE_DIR}/memcheck.supp
              $<TARGET_FILE:${_zt_test}> --gtest_brief=1 ${_zt_args})
          set_tests_properties(memcheck_${_zt_test} PROPERTIES LABELS memcheck TIMEOUT 900)
        endif()
      endif()
    endforeach()
  endfunction()
  cmake_language(DEFER CALL zt_add_memcheck_tests)
endif()
