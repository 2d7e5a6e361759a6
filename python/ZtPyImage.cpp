// ztcoreex.Image: a CZtImage that NumPy can view without a copy.
//
// The buffer protocol hands out the image's own block. While any such view
// lives, the block must stay where it is, so every operation that would free
// or replace it raises BufferError. The views are counted by wrapping the
// type's buffer slots, which pybind11 fills in.

#include <limits>
#include <memory>
#include <type_traits>

#include "ZtImage.h"
#include "ZtPixel.h"
#include "ZtPyCommon.h"

namespace ZtPy {

namespace {

using Zt::CZtImage;

struct Image {
  std::unique_ptr<CZtImage> Pixels = std::make_unique<CZtImage>();
  // Buffer views handed out and not yet released, plus conversions that read
  // the block with the GIL released.
  int Users = 0;

  void CheckMovable(const char* what) const {
    if (Users > 0)
      throw py::buffer_error(std::string("cannot ") + what +
                             " while a buffer view of the image exists");
  }
};

// Counts the uses of an image's block for the duration of a scope.
class UseGuard {
public:
  explicit UseGuard(Image& image) : m_Image(image) { ++m_Image.Users; }
  ~UseGuard() { --m_Image.Users; }
  UseGuard(const UseGuard&) = delete;
  UseGuard& operator=(const UseGuard&) = delete;

private:
  Image& m_Image;
};

getbufferproc g_BaseGetBuffer = nullptr;
releasebufferproc g_BaseReleaseBuffer = nullptr;

int GetBuffer(PyObject* object, Py_buffer* view, int flags) {
  const int result = g_BaseGetBuffer(object, view, flags);
  if (result == 0) ++py::handle(object).cast<Image*>()->Users;
  return result;
}

void ReleaseBuffer(PyObject* object, Py_buffer* view) {
  --py::handle(object).cast<Image*>()->Users;
  g_BaseReleaseBuffer(object, view);
}

const CZtImageFormat& FormatOf(const Image& image) { return image.Pixels->GetFormat(); }

// Makes a new block of the format: the old one stays untouched when the
// library refuses.
std::unique_ptr<CZtImage> Allocate(int width, int height, EPixelType::ID layout, EDataType::ID type,
                                   const void* data) {
  CheckCounts(width, height, layout, type);
  auto pixels = std::make_unique<CZtImage>();
  const bool created = data != nullptr ? pixels->Create(width, height, layout, type, data)
                                       : pixels->Create(width, height, layout, type);
  if (!created)
    throw py::value_error("cannot create an image of " +
                          FormatText(CZtImageFormat(width, height, layout, type)));
  return pixels;
}

std::unique_ptr<Image> FromSize(int width, int height, py::handle layout, py::handle type) {
  auto image = std::make_unique<Image>();
  image->Pixels = Allocate(width, height, ParseLayout(layout), ParseDataType(type), nullptr);
  return image;
}

std::unique_ptr<Image> FromArray(py::handle source, py::handle layoutArgument) {
  if (!py::isinstance<py::array>(source))
    throw py::type_error("the source must be a numpy.ndarray");
  auto array = py::reinterpret_borrow<py::array>(source);
  const EPixelType::ID layout = ParseLayout(layoutArgument);
  const EDataType::ID type = DataTypeOfArray(array);
  int width = 0;
  int height = 0;
  CheckImageArray(array, layout, "source", width, height);
  auto image = std::make_unique<Image>();
  image->Pixels = Allocate(width, height, layout, type, array.data());
  return image;
}

void Create(Image& image, int width, int height, py::handle layout, py::handle type) {
  image.CheckMovable("create the image anew");
  image.Pixels = Allocate(width, height, ParseLayout(layout), ParseDataType(type), nullptr);
}

py::object ConvertImage(Image& source, py::handle layoutArgument, py::handle typeArgument,
                        py::object out) {
  const CZtImageFormat& format = FormatOf(source);
  const EPixelType::ID layout = ParseLayout(layoutArgument);
  const EDataType::ID type = typeArgument.is_none() ? format.DataType : ParseDataType(typeArgument);
  Image* target = nullptr;
  if (!out.is_none()) {
    target = out.cast<Image*>();
    if (target == &source) throw py::value_error("an image cannot be converted into itself");
    target->CheckMovable("convert into the image");
  }
  CheckCounts(format.Width, format.Height, layout, type);
  // The result goes into a new image first, so that a refused conversion
  // leaves `out` as it was.
  auto pixels = std::make_unique<CZtImage>();
  bool converted = false;
  {
    UseGuard reading(source);
    py::gil_scoped_release unlocked;
    converted = source.Pixels->ConvertType(*pixels, layout, type);
  }
  if (!converted)
    throw py::value_error("no conversion from " + FormatText(format) + " to " +
                          FormatText(CZtImageFormat(format.Width, format.Height, layout, type)));
  if (target == nullptr) {
    auto result = std::make_unique<Image>();
    result->Pixels = std::move(pixels);
    return py::cast(std::move(result));
  }
  target->CheckMovable("convert into the image");
  target->Pixels = std::move(pixels);
  return out;
}

py::buffer_info Buffer(Image& image) {
  const CZtImageFormat& format = FormatOf(image);
  const SampleType& type = LookUp(format.DataType);
  const int samples = SampleCount(format.PixelType);
  std::vector<py::ssize_t> shape = ImageShape(format.Width, format.Height, format.PixelType);
  std::vector<py::ssize_t> strides;
  const py::ssize_t pixelBytes = samples * type.Size;
  strides.push_back(pixelBytes * format.Width);
  strides.push_back(pixelBytes);
  if (samples > 1) strides.push_back(type.Size);
  return py::buffer_info(image.Pixels->GetDataPtr(), type.Size, type.Format,
                         static_cast<py::ssize_t>(shape.size()), shape, strides, false);
}

// --- Pixel access through the library's typed GetPixel and SetPixel --------

template <class T>
py::object SampleToPython(T sample) {
  if constexpr (std::is_floating_point_v<T>)
    return py::float_(static_cast<double>(sample));
  else if constexpr (std::is_same_v<T, char>)
    return py::int_(static_cast<int>(static_cast<signed char>(sample)));
  else
    return py::int_(sample);
}

template <class T>
T SampleFromPython(py::handle value) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(py::cast<double>(py::float_(py::reinterpret_borrow<py::object>(value))));
  } else {
    using Limits = std::numeric_limits<std::conditional_t<std::is_same_v<T, char>, signed char, T>>;
    if (PyIndex_Check(value.ptr()) == 0) throw py::type_error("an integer sample is an int");
    const auto integer = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
    if (!integer) throw py::error_already_set();
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(integer.ptr(), &overflow);
    if (overflow != 0 || number < static_cast<long long>(Limits::min()) ||
        number > static_cast<long long>(Limits::max()))
      throw py::value_error("sample " + std::string(py::str(value)) + " is out of range");
    return static_cast<T>(number);
  }
}

void CheckInside(const Image& image, int x, int y) {
  const CZtImageFormat& format = FormatOf(image);
  if (x < 0 || y < 0 || x >= format.Width || y >= format.Height)
    throw py::index_error("pixel (" + std::to_string(x) + ", " + std::to_string(y) +
                          ") is outside the " + std::to_string(format.Width) + "x" +
                          std::to_string(format.Height) + " image");
}

template <class Pixel>
using SampleOf = std::remove_extent_t<decltype(Pixel::Samples)>;
template <class Pixel>
constexpr std::size_t kSamplesOf = std::extent_v<decltype(Pixel::Samples)>;

template <class Pixel>
py::object ReadPixel(const CZtImage& pixels, int x, int y) {
  constexpr std::size_t N = kSamplesOf<Pixel>;
  Pixel pixel;
  pixels.GetPixel(pixel, x, y);
  if (N == 1) return SampleToPython(pixel.Samples[0]);
  py::tuple samples(N);
  for (std::size_t i = 0; i < N; ++i) samples[i] = SampleToPython(pixel.Samples[i]);
  return std::move(samples);
}

template <class Pixel>
void WritePixel(CZtImage& pixels, int x, int y, py::handle value) {
  using T = SampleOf<Pixel>;
  constexpr std::size_t N = kSamplesOf<Pixel>;
  Pixel pixel;
  if (N == 1 && !py::isinstance<py::sequence>(value)) {
    pixel.Samples[0] = SampleFromPython<T>(value);
  } else {
    auto samples = py::reinterpret_borrow<py::sequence>(value);
    if (samples.size() != N)
      throw py::value_error("a pixel of this layout has " + std::to_string(N) + " samples");
    for (std::size_t i = 0; i < N; ++i) pixel.Samples[i] = SampleFromPython<T>(samples[i]);
  }
  pixels.SetPixel(pixel, x, y);
}

py::object GetPixel(const Image& image, int x, int y) {
  CheckInside(image, x, y);
  const CZtImageFormat& format = FormatOf(image);
#define ZT_PY_READ(Layout, T)                                                                 \
  if (format.PixelType == EPixelType::Layout && format.DataType == Zt::TDataTypeOf<T>::Value) \
    return ReadPixel<Zt::TPixel##Layout<T>>(*image.Pixels, x, y);
  ZT_PIXEL_FOR_EACH_TYPE(ZT_PY_READ)
#undef ZT_PY_READ
  throw py::value_error("the image has no pixel type");
}

void SetPixel(Image& image, int x, int y, py::handle value) {
  CheckInside(image, x, y);
  const CZtImageFormat& format = FormatOf(image);
#define ZT_PY_WRITE(Layout, T)                                                                \
  if (format.PixelType == EPixelType::Layout && format.DataType == Zt::TDataTypeOf<T>::Value) \
    return WritePixel<Zt::TPixel##Layout<T>>(*image.Pixels, x, y, value);
  ZT_PIXEL_FOR_EACH_TYPE(ZT_PY_WRITE)
#undef ZT_PY_WRITE
  throw py::value_error("the image has no pixel type");
}

}  // namespace

void DefineImage(py::module_& module) {
  py::class_<Image> image(module, "Image", py::buffer_protocol(),
                          "An image that owns its pixels; numpy.asarray(image) views them.");
  image
      .def(py::init(&FromSize), py::arg("width"), py::arg("height"), py::arg("layout"),
           py::arg("data_type"), "An uninitialised image of the given size and types.")
      .def(py::init(&FromArray), py::arg("array"), py::arg("layout"),
           "A copy of an image held in a C-contiguous array.")
      .def_buffer(&Buffer)
      .def("create", &Create, py::arg("width"), py::arg("height"), py::arg("layout"),
           py::arg("data_type"),
           "Replaces the pixels with an uninitialised block of the given format.")
      .def("convert", &ConvertImage, py::arg("layout"), py::arg("data_type") = py::none(),
           py::arg("out") = py::none(),
           "A new image of the given types, or `out` made anew with the result.")
      .def(
          "normalize", [](Image& self) { return self.Pixels->Normalize(); },
          "Stretches a Lum Float image to 0..1; False for any other format.")
      .def("get_pixel", &GetPixel, py::arg("x"), py::arg("y"))
      .def("set_pixel", &SetPixel, py::arg("x"), py::arg("y"), py::arg("value"))
      .def_property_readonly("width", [](const Image& self) { return FormatOf(self).Width; })
      .def_property_readonly("height", [](const Image& self) { return FormatOf(self).Height; })
      .def_property_readonly("layout", [](const Image& self) { return FormatOf(self).PixelType; })
      .def_property_readonly("data_type", [](const Image& self) { return FormatOf(self).DataType; })
      .def_property_readonly("dtype",
                             [](const Image& self) { return ToDtype(FormatOf(self).DataType); })
      .def_property_readonly(
          "shape",
          [](const Image& self) {
            const CZtImageFormat& format = FormatOf(self);
            py::list shape;
            for (py::ssize_t side : ImageShape(format.Width, format.Height, format.PixelType))
              shape.append(side);
            return py::tuple(shape);
          })
      .def_property_readonly("format", [](const Image& self) { return FormatText(FormatOf(self)); })
      .def("__repr__",
           [](const Image& self) { return "<ztcoreex.Image " + FormatText(FormatOf(self)) + ">"; });

  auto* type = reinterpret_cast<PyTypeObject*>(image.ptr());
  g_BaseGetBuffer = type->tp_as_buffer->bf_getbuffer;
  g_BaseReleaseBuffer = type->tp_as_buffer->bf_releasebuffer;
  type->tp_as_buffer->bf_getbuffer = &GetBuffer;
  type->tp_as_buffer->bf_releasebuffer = &ReleaseBuffer;
}

}  // namespace ZtPy
