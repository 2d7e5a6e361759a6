// ztcoreex.MetaData: the metadata store with a mapping's reading side.
//
// The Python object is the store and nothing more. Names are read in the
// store's own order, values with the type the store reports for them, and
// every refusal is the store's own exception chain.

#include <limits>
#include <string>

#include "ZtMetaData.h"
#include "ZtPyCommon.h"

namespace ZtPy {

namespace {

using Zt::CZtArrayDouble;
using Zt::CZtArrayString;
using Zt::CZtArrayUInt;
using Zt::CZtMetaData;
using Zt::CZtString;

// The store keys a name by its text up to the first NUL.
CZtString Key(const std::string& name) { return CZtString(name.c_str()); }

// Python ints and whatever else stands for one (NumPy's integer scalars).
bool IsInteger(py::handle value) {
  return PyIndex_Check(value.ptr()) != 0 && !py::isinstance<py::float_>(value);
}

unsigned int ToUInt(py::handle value) {
  const auto integer = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
  if (!integer) throw py::error_already_set();
  int overflow = 0;
  const long long number = PyLong_AsLongLongAndOverflow(integer.ptr(), &overflow);
  if (overflow != 0 || number < 0 || number > std::numeric_limits<unsigned int>::max())
    throw py::value_error("the store holds integers from 0 to 4294967295, not " +
                          std::string(py::str(value)));
  return static_cast<unsigned int>(number);
}

// Calls `use` with the store's own type for a Python value: unsigned int,
// double, CZtString, or one of the three arrays for a list or tuple.
template <class Use>
void WithStoreValue(py::handle value, Use&& use) {
  if (IsInteger(value)) return use(ToUInt(value));
  if (py::isinstance<py::float_>(value)) return use(value.cast<double>());
  if (py::isinstance<py::str>(value)) return use(Key(value.cast<std::string>()));
  if (!py::isinstance<py::list>(value) && !py::isinstance<py::tuple>(value))
    throw py::type_error("the store holds int, float, str and lists of them, not " +
                         std::string(py::str(value.get_type().attr("__name__"))));
  auto items = py::reinterpret_borrow<py::sequence>(value);
  const std::size_t count = items.size();
  std::size_t ints = 0;
  std::size_t floats = 0;
  std::size_t texts = 0;
  for (py::handle item : items) {
    if (IsInteger(item))
      ++ints;
    else if (py::isinstance<py::float_>(item))
      ++floats;
    else if (py::isinstance<py::str>(item))
      ++texts;
  }
  if (ints == count) {
    CZtArrayUInt array(count);
    for (std::size_t i = 0; i < count; ++i) array[i] = ToUInt(items[i]);
    return use(array);
  }
  if (ints + floats == count) {
    CZtArrayDouble array(count);
    for (std::size_t i = 0; i < count; ++i) array[i] = items[i].cast<double>();
    return use(array);
  }
  if (texts == count) {
    CZtArrayString array(count);
    for (std::size_t i = 0; i < count; ++i) array[i] = Key(items[i].cast<std::string>());
    return use(array);
  }
  throw py::type_error("a list in the store holds ints, floats or strs, not a mix of them");
}

// The type the store reports for a name ("uint", "double", "string"), found
// by a binary search over the store's name order; empty when it has none.
std::string TypeOf(CZtMetaData& store, const std::string& name) {
  const std::string key(Key(name).ToCString());
  unsigned int low = 0;
  unsigned int high = store.GetElementCount();
  while (low < high) {
    const unsigned int middle = low + (high - low) / 2;
    CZtString found;
    CZtString type;
    store.GetElementNameType(middle, found, type);
    const int order = std::string(found.ToCString()).compare(key);
    if (order == 0) return type.ToCString();
    if (order < 0)
      low = middle + 1;
    else
      high = middle;
  }
  return std::string();
}

py::object Read(CZtMetaData& store, const std::string& name) {
  const std::string type = TypeOf(store, name);
  if (type == "double") {
    double value = 0.0;
    store.GetElement(Key(name), value);
    return py::float_(value);
  }
  if (type == "string") {
    CZtString value;
    store.GetElement(Key(name), value);
    return py::str(value.ToCString());
  }
  // "uint", and a name the store lacks, whose read raises the store's own
  // failure.
  unsigned int value = 0;
  store.GetElement(Key(name), value);
  return py::int_(value);
}

py::list Names(CZtMetaData& store) {
  py::list names;
  const unsigned int count = store.GetElementCount();
  for (unsigned int i = 0; i < count; ++i) {
    CZtString name;
    CZtString type;
    store.GetElementNameType(i, name, type);
    names.append(py::str(name.ToCString()));
  }
  return names;
}

}  // namespace

void DefineMetaData(py::module_& module) {
  py::class_<CZtMetaData>(module, "MetaData",
                          "The metadata store: named int, float and str values and lists of "
                          "them, read like a mapping in the store's name order.")
      .def(py::init<>())
      .def("__len__", &CZtMetaData::GetElementCount)
      .def("__contains__",
           [](CZtMetaData& self, py::handle name) {
             return py::isinstance<py::str>(name) && self.HasElement(Key(name.cast<std::string>()));
           })
      .def("__iter__", [](CZtMetaData& self) { return py::iter(Names(self)); })
      .def("keys", &Names)
      .def("values",
           [](CZtMetaData& self) {
             py::list values;
             for (py::handle name : Names(self))
               values.append(Read(self, name.cast<std::string>()));
             return values;
           })
      .def("items",
           [](CZtMetaData& self) {
             py::list items;
             for (py::handle name : Names(self))
               items.append(py::make_tuple(name, Read(self, name.cast<std::string>())));
             return items;
           })
      .def("__getitem__", &Read, py::arg("name"))
      .def(
          "get",
          [](CZtMetaData& self, const std::string& name, py::object fallback) {
            return self.HasElement(Key(name)) ? Read(self, name) : fallback;
          },
          py::arg("name"), py::arg("default") = py::none())
      .def(
          "__setitem__",
          [](CZtMetaData& self, const std::string& name, py::handle value) {
            WithStoreValue(value, [&](const auto& typed) { self.SetElement(Key(name), typed); });
          },
          py::arg("name"), py::arg("value"), "Replaces the value of an element of that type.")
      .def(
          "add",
          [](CZtMetaData& self, const std::string& name, py::handle value,
             const std::string& description) {
            WithStoreValue(value, [&](const auto& typed) {
              self.AddElement(Key(name), Key(description), typed);
            });
          },
          py::arg("name"), py::arg("value"), py::arg("description") = "",
          "Adds a new element; the store refuses a name it already holds.")
      .def("clear", &CZtMetaData::Clear)
      .def("copy", [](const CZtMetaData& self) { return CZtMetaData(self); })
      .def("__copy__", [](const CZtMetaData& self) { return CZtMetaData(self); })
      .def("__repr__", [](CZtMetaData& self) {
        return "<ztcoreex.MetaData of " + std::to_string(self.GetElementCount()) + " elements>";
      });
}

}  // namespace ZtPy
