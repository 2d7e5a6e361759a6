# The OpenCV column of zt-convert-bench, linked into the benchmark alone.
# Debian's core and imgproc development packages ship headers and libraries
# but no CMake package file (that comes with the package of every module), so
# when find_package finds nothing the two libraries are looked up directly.
find_package(OpenCV QUIET COMPONENTS core imgproc)
if(OpenCV_FOUND)
  set(_zt_opencv_includes ${OpenCV_INCLUDE_DIRS})
  set(_zt_opencv_libraries opencv_core opencv_imgproc)
else()
  find_path(ZT_OPENCV_INCLUDE_DIR opencv2/core.hpp PATH_SUFFIXES opencv4)
  find_library(ZT_OPENCV_CORE_LIBRARY opencv_core)
  find_library(ZT_OPENCV_IMGPROC_LIBRARY opencv_imgproc)
  if(ZT_OPENCV_INCLUDE_DIR AND ZT_OPENCV_CORE_LIBRARY AND ZT_OPENCV_IMGPROC_LIBRARY)
    set(_zt_opencv_includes ${ZT_OPENCV_INCLUDE_DIR})
    set(_zt_opencv_libraries ${ZT_OPENCV_IMGPROC_LIBRARY} ${ZT_OPENCV_CORE_LIBRARY})
  endif()
endif()

if(_zt_opencv_libraries)
  message(STATUS "zt-convert-bench: with OpenCV (${_zt_opencv_includes})")
  target_sources(zt-convert-bench PRIVATE ${CMAKE_CURRENT_LIST_DIR}/ZtConvertOpenCv.cpp)
  target_include_directories(zt-convert-bench SYSTEM PRIVATE ${_zt_opencv_includes})
  target_link_libraries(zt-convert-bench PRIVATE ${_zt_opencv_libraries})
  target_compile_definitions(zt-convert-bench PRIVATE ZT_BENCH_OPENCV=1)
else()
  message(STATUS "zt-convert-bench: without OpenCV (libopencv-core-dev and libopencv-imgproc-dev not found)")
endif()
