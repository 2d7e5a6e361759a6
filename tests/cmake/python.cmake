# The Python module's suite under the interpreter the module is built for, where it is built.
if(TARGET ztcoreex)
  add_test(NAME zt_python_tests
    COMMAND ${CMAKE_COMMAND} -E env PYTHONPATH=$<TARGET_FILE_DIR:ztcoreex> PYTHONDONTWRITEBYTECODE=1
      ${ZT_PYTHON} -m pytest -q -p no:cacheprovider ${CMAKE_CURRENT_SOURCE_DIR}/python)
  set_tests_properties(zt_python_tests PROPERTIES LABELS python TIMEOUT 300)
endif()
