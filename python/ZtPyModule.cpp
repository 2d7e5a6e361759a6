// The module ztcoreex: the enums, the exception type, the argument parsing
// shared by every part, and convert() over NumPy arrays.

#include <climits>
#include <cstring>
#include <exception>

#include "ZtException.h"
#include "ZtImage.h"
#include "ZtPyCommon.h"

namespace ZtPy {

namespace {

const SampleType g_SampleTypes[] = {
    {EDataType::Byte, "Byte", "int8", "b", 1},
    {EDataType::UByte, "UByte", "uint8", "B", 1},
    {EDataType::Short, "Short", "int16", "h", 2},
    {EDataType::UShort, "UShort", "uint16", "H", 2},
    {EDataType::Int, "Int", "int32", "i", 4},
    {EDataType::UInt, "UInt", "uint32", "I", 4},
    {EDataType::Float, "Float", "float32", "f", 4},
    {EDataType::Double, "Double", "float64", "d", 8},
};

struct LayoutName {
  EPixelType::ID Id;
  const char* Name;
};

const LayoutName g_Layouts[] = {
    {EPixelType::RGB, "RGB"},         {EPixelType::RGBA, "RGBA"},
    {EPixelType::BGR, "BGR"},         {EPixelType::BGRA, "BGRA"},
    {EPixelType::Lum, "Lum"},         {EPixelType::LumA, "LumA"},
    {EPixelType::BayerRG, "BayerRG"}, {EPixelType::BayerBG, "BayerBG"},
    {EPixelType::BayerGR, "BayerGR"}, {EPixelType::BayerGB, "BayerGB"},
};

constexpr unsigned long long kCountLimit = 1ULL << 32;

// The Python type ztcoreex.Error, made at import.
py::object& ErrorType() {
  static py::object type;
  return type;
}

// One Error object for a library exception and, through .inner, its chain.
py::object MakeError(const Zt::CIException& exception) {
  py::object error = ErrorType()(std::string(exception.ToString()));
  error.attr("message") = std::string(exception.GetMessageText());
  error.attr("function") = std::string(exception.GetFunction());
  error.attr("file") = std::string(exception.GetFile());
  error.attr("line") = exception.GetLine();
  error.attr("name") = std::string(exception.GetName());
  const auto* concrete = dynamic_cast<const Zt::CZtException*>(&exception);
  const Zt::CIException* inner = concrete != nullptr ? concrete->GetInnerException() : nullptr;
  error.attr("inner") = inner != nullptr ? MakeError(*inner) : py::none();
  return error;
}

bool Overlap(const py::array& a, const py::array& b) {
  const auto* aBegin = static_cast<const char*>(a.data());
  const auto* bBegin = static_cast<const char*>(b.data());
  const auto aSize = static_cast<std::size_t>(a.nbytes());
  const auto bSize = static_cast<std::size_t>(b.nbytes());
  if (aSize == 0 || bSize == 0) return false;
  return aBegin < bBegin + bSize && bBegin < aBegin + aSize;
}

py::array Convert(py::object source, py::object sourceLayout, py::object targetLayout,
                  py::object targetType, py::object out) {
  if (!py::isinstance<py::array>(source))
    throw py::type_error("the source must be a numpy.ndarray");
  auto sourceArray = py::reinterpret_borrow<py::array>(source);
  const EPixelType::ID sourcePixel = ParseLayout(sourceLayout);
  const EPixelType::ID targetPixel = ParseLayout(targetLayout);
  const EDataType::ID sourceData = DataTypeOfArray(sourceArray);
  const EDataType::ID targetData = targetType.is_none() ? sourceData : ParseDataType(targetType);
  int width = 0;
  int height = 0;
  CheckImageArray(sourceArray, sourcePixel, "source", width, height);
  CheckCounts(width, height, sourcePixel, sourceData);
  CheckCounts(width, height, targetPixel, targetData);

  py::array target;
  if (out.is_none()) {
    target = py::array(ToDtype(targetData), ImageShape(width, height, targetPixel));
  } else {
    if (!py::isinstance<py::array>(out)) throw py::type_error("out must be a numpy.ndarray");
    target = py::reinterpret_borrow<py::array>(out);
    if (DataTypeOfArray(target) != targetData)
      throw py::type_error("out has dtype " + std::string(py::str(target.dtype())) +
                           ", the conversion writes " + LookUp(targetData).NumpyName);
    if (!target.writeable()) throw py::value_error("out is read-only");
    int outWidth = 0;
    int outHeight = 0;
    CheckImageArray(target, targetPixel, "out", outWidth, outHeight);
    if (outWidth != width || outHeight != height)
      throw py::value_error("out holds a " + std::to_string(outWidth) + "x" +
                            std::to_string(outHeight) + " image, the source a " +
                            std::to_string(width) + "x" + std::to_string(height) + " one");
    if (Overlap(sourceArray, target)) throw py::value_error("out overlaps the source");
  }

  const CZtImageFormat sourceFormat(width, height, sourcePixel, sourceData);
  const CZtImageFormat targetFormat(width, height, targetPixel, targetData);
  const void* from = sourceArray.data();
  void* to = target.mutable_data();
  bool converted = false;
  {
    py::gil_scoped_release unlocked;
    converted = Zt::CZtImage::ConvertMemory(to, from, targetFormat, sourceFormat);
  }
  if (!converted)
    throw py::value_error("no conversion from " + FormatText(sourceFormat) + " to " +
                          FormatText(targetFormat));
  return target;
}

}  // namespace

const SampleType& LookUp(EDataType::ID id) {
  for (const SampleType& type : g_SampleTypes)
    if (type.Id == id) return type;
  throw py::value_error("unknown data type " + std::to_string(static_cast<int>(id)));
}

py::dtype ToDtype(EDataType::ID id) { return py::dtype(LookUp(id).NumpyName); }

EPixelType::ID ParseLayout(py::handle value) {
  if (py::isinstance<py::str>(value)) {
    const auto name = value.cast<std::string>();
    for (const LayoutName& layout : g_Layouts)
      if (name == layout.Name) return layout.Id;
    throw py::value_error("unknown pixel layout '" + name + "'");
  }
  if (py::isinstance<EPixelType::ID>(value)) return value.cast<EPixelType::ID>();
  throw py::type_error("a pixel layout is a ztcoreex.PixelType or its name");
}

EDataType::ID ParseDataType(py::handle value) {
  // numpy.dtype(None) is float64; here None is no type at all.
  if (value.is_none()) throw py::type_error("a data type is needed, not None");
  if (py::isinstance<EDataType::ID>(value)) return value.cast<EDataType::ID>();
  if (py::isinstance<py::str>(value)) {
    const auto name = value.cast<std::string>();
    for (const SampleType& type : g_SampleTypes)
      if (name == type.Name) return type.Id;
  }
  py::dtype dtype;
  try {
    dtype = py::dtype::from_args(py::reinterpret_borrow<py::object>(value));
  } catch (py::error_already_set&) {
    throw py::type_error("not a data type: " + std::string(py::repr(value)));
  }
  const auto kind = dtype.kind();
  const auto size = static_cast<int>(dtype.itemsize());
  // The kind is the first letter of NumPy's name: 'i', 'u' or 'f'.
  for (const SampleType& type : g_SampleTypes)
    if (type.NumpyName[0] == kind && type.Size == size && dtype.attr("isnative").cast<bool>())
      return type.Id;
  throw py::type_error("unsupported dtype " + std::string(py::str(dtype)) +
                       ": use int8, uint8, int16, uint16, int32, uint32, float32 or float64 "
                       "in native byte order");
}

EDataType::ID DataTypeOfArray(const py::array& array) { return ParseDataType(array.dtype()); }

int SampleCount(EPixelType::ID layout) {
  return CZtImageFormat::GetPixelTypeComponentCount(layout);
}

std::vector<py::ssize_t> ImageShape(int width, int height, EPixelType::ID layout) {
  const int samples = SampleCount(layout);
  if (samples == 1) return {height, width};
  return {height, width, samples};
}

void CheckImageArray(const py::array& array, EPixelType::ID layout, const char* role, int& width,
                     int& height) {
  const int samples = SampleCount(layout);
  const std::string who(role);
  if (samples == 1 && array.ndim() != 2)
    throw py::value_error(who + " must have the shape (H, W) for a one-sample layout, not " +
                          std::string(py::str(array.attr("shape"))));
  if (samples > 1 && (array.ndim() != 3 || array.shape(2) != samples))
    throw py::value_error(who + " must have the shape (H, W, " + std::to_string(samples) +
                          ") for this layout, not " + std::string(py::str(array.attr("shape"))));
  if ((array.flags() & py::array::c_style) == 0)
    throw py::value_error(who + " must be C-contiguous");
  if (array.shape(0) > INT_MAX || array.shape(1) > INT_MAX)
    throw py::value_error(who + " is too large: a side of 2^31 pixels or more");
  height = static_cast<int>(array.shape(0));
  width = static_cast<int>(array.shape(1));
}

void CheckCounts(int width, int height, EPixelType::ID layout, EDataType::ID type) {
  const auto pixels =
      static_cast<unsigned long long>(width) * static_cast<unsigned long long>(height);
  const auto bytes =
      pixels * static_cast<unsigned long long>(SampleCount(layout) * LookUp(type).Size);
  if (pixels >= kCountLimit || bytes >= kCountLimit)
    throw py::value_error(
        "an image of 2^32 pixels or bytes and more is beyond the library's counts");
}

std::string FormatText(const CZtImageFormat& format) { return format.ToString().ToCString(); }

namespace {

// The bound function, owned by the module as _convert.
PyObject* g_Convert = nullptr;

PyObject* ForwardConvert(PyObject* /*module*/, PyObject* args, PyObject* kwargs) {
  return PyObject_Call(g_Convert, args, kwargs);
}

}  // namespace

void DefineConvert(py::module_& module) {
  static const char* const description =
      "Converts an image held in a NumPy array into another layout and sample type.\n\n"
      "The source is C-contiguous, of shape (H, W) for Lum and the Bayer layouts and\n"
      "(H, W, C) otherwise. The result has the target dtype (the source's when\n"
      "target_type is None); with out= it is written into that array.";
  module.def("_convert", &Convert, py::arg("array"), py::arg("source_layout"),
             py::arg("target_layout"), py::arg("target_type") = py::none(),
             py::arg("out") = py::none(), description);
  // convert itself is a plain built-in function of the module, which pickle
  // sends by name: Dask's workers receive it that way. A function that
  // pybind11 makes belongs to a capsule, which cannot be pickled.
  g_Convert = module.attr("_convert").ptr();
  static const std::string doc =
      std::string(
          "convert(array, source_layout, target_layout, target_type=None, out=None)\n"
          "--\n\n") +
      description;
  static PyMethodDef definition = {
      "convert", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&ForwardConvert)),
      METH_VARARGS | METH_KEYWORDS, doc.c_str()};
  module.attr("convert") = py::reinterpret_steal<py::object>(
      PyCFunction_NewEx(&definition, module.ptr(), module.attr("__name__").ptr()));
}

}  // namespace ZtPy

PYBIND11_MODULE(ztcoreex, module) {
  namespace py = pybind11;
  using namespace ZtPy;
  module.doc() = "Pixel conversion, images and the metadata store of Zt.Core.Ex, for NumPy.";

  // The enums take their members from the tables that the name parsing uses.
  py::enum_<EPixelType::ID> pixelTypes(module, "PixelType");
  for (const LayoutName& layout : g_Layouts) pixelTypes.value(layout.Name, layout.Id);
  py::enum_<EDataType::ID> dataTypes(module, "DataType");
  for (const SampleType& type : g_SampleTypes) dataTypes.value(type.Name, type.Id);

  // ztcoreex.Error: str() is the library's own text of the whole chain; the
  // attributes hold this link's parts and .inner the next link.
  py::dict namespaceDict;
  namespaceDict["__module__"] = "ztcoreex";
  namespaceDict["__doc__"] =
      "A failure reported by the library: message, function, file, line, name and the\n"
      "inner exception (.inner, an Error or None).";
  ErrorType() = py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(&PyType_Type))(
      "Error", py::make_tuple(py::reinterpret_borrow<py::object>(PyExc_Exception)), namespaceDict);
  module.attr("Error") = ErrorType();
  py::register_exception_translator([](std::exception_ptr pending) {
    try {
      if (pending) std::rethrow_exception(pending);
    } catch (const Zt::CIException& exception) {
      py::object error = MakeError(exception);
      PyErr_SetObject(ErrorType().ptr(), error.ptr());
    }
  });
  // The type object must not outlive the interpreter's teardown.
  module.add_object("_cleanup", py::capsule([]() { ErrorType().release().dec_ref(); }));

  DefineConvert(module);
  DefineImage(module);
  DefineMetaData(module);
}
