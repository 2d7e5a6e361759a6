#ifndef ZT_PYTHON_ZTPYCOMMON_H
#define ZT_PYTHON_ZTPYCOMMON_H

// Pieces shared by the parts of the Python module: the mapping between the
// library's sample types and NumPy's, the parsing of layout and type
// arguments, and the checks that an array can serve as an image block.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstdint>
#include <string>

#include "ZtImageFormat.h"
#include "ZtInterop.h"

namespace ZtPy {

namespace py = pybind11;
using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;

// One of the eight sample types, with the matching NumPy type and buffer
// format character.
struct SampleType {
  EDataType::ID Id;
  const char* Name;       // the library's display name
  const char* NumpyName;  // the NumPy dtype of the same samples
  const char* Format;     // the buffer-protocol format character
  int Size;
};

const SampleType& LookUp(EDataType::ID id);
py::dtype ToDtype(EDataType::ID id);

// The layout of a PixelType member or of its name ("RGB", "BayerGR", ...).
EPixelType::ID ParseLayout(py::handle value);
// The sample type of a DataType member, of its name ("UByte"), or of anything
// numpy.dtype accepts (numpy.uint8, "float32", a dtype).
EDataType::ID ParseDataType(py::handle value);
// The sample type of an array's dtype; TypeError for any other dtype and for
// a byte order that is not the machine's.
EDataType::ID DataTypeOfArray(const py::array& array);

// Samples per pixel of a layout: 1 for Lum and the Bayer types.
int SampleCount(EPixelType::ID layout);

// The array shape that holds an image: (H, W) for one sample a pixel,
// (H, W, C) otherwise.
std::vector<py::ssize_t> ImageShape(int width, int height, EPixelType::ID layout);

// Width and height of an array that is to be read or written as an image of
// `layout`; raises ValueError for another shape, for memory that is not
// C-contiguous, and for sizes the library's 32-bit counts cannot hold.
// `role` names the array in the messages ("source", "out").
void CheckImageArray(const py::array& array, EPixelType::ID layout, const char* role, int& width,
                     int& height);
// Refuses a pixel count or a byte count of 2^32 and more for the format.
void CheckCounts(int width, int height, EPixelType::ID layout, EDataType::ID type);

std::string FormatText(const CZtImageFormat& format);

void DefineConvert(py::module_& module);
void DefineImage(py::module_& module);
void DefineMetaData(py::module_& module);

}  // namespace ZtPy

#endif
