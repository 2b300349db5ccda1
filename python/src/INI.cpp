// The INI document: a file of sections, a section of values. Besides the library's own
// operations, a document and a section read as a sequence and a mapping by key (len, [i],
// [key], in, iteration), a section takes section[key] = text, and a document in a with block
// is saved at its end unless the block raised.
#include "Bindings.h"
#include "support/tnwINIFile.h"

namespace tnw::python {
namespace {

// The entry of sKey, or nothing when there is none.
template <class Owner>
auto FindEntry(const Owner& o, const std::string& sKey) -> decltype(o.Item(Variant())) {
    try {
        return o.Item(Variant(sKey));
    } catch (const Error& e) {
        if (e.lNumber != errInvalidCall) throw;
        return nullptr;
    }
}

// [key] by key (KeyError when absent) or [i] by 0-based place (negative from the end).
template <class Owner>
auto EntryAt(const Owner& o, py::handle oKey) {
    if (py::isinstance<py::str>(oKey)) {
        const auto sKey = oKey.cast<std::string>();
        auto oEntry = FindEntry(o, sKey);
        if (!oEntry) throw py::key_error(sKey);
        return oEntry;
    }
    auto lIndex = oKey.cast<std::int64_t>();
    const std::int64_t nCount = o.Count();
    if (lIndex < 0) lIndex += nCount;
    if (lIndex < 0 || lIndex >= nCount) throw py::index_error();
    return o.Item(Variant(static_cast<std::int32_t>(lIndex + 1)));
}

// The sequence and mapping protocol of a document or a section.
template <class Owner, class... Options>
void AddEntryProtocol(py::class_<Owner, Options...>& c) {
    c.def("__len__", &Owner::Count)
        .def("__iter__", [](const Owner& o) { return py::iter(py::cast(o.NewEnum())); })
        .def("__getitem__", &EntryAt<Owner>)
        .def("__contains__",
             [](const Owner& o, const std::string& sKey) { return FindEntry(o, sKey) != nullptr; })
        .def("keys", [](const Owner& o) {
            py::list oKeys;
            for (const auto& oEntry : o.NewEnum())
                oKeys.append(oEntry->Key());
            return oKeys;
        });
}

}  // namespace

void BindINI(py::module_& m) {
    py::enum_<TNW_Encoders_OpenModes>(m, "TNW_Encoders_OpenModes", py::arithmetic())
        .value("TNW_OpenMode_Create", TNW_OpenMode_Create)
        .value("TNW_OpenMode_Open", TNW_OpenMode_Open)
        .value("TNW_OpenMode_OpenCreate", TNW_OpenMode_OpenCreate)
        .export_values();

    py::class_<tnwINIValue, std::shared_ptr<tnwINIValue>>(m, "tnwINIValue")
        .def_property_readonly("Key", &tnwINIValue::Key)
        .def_property("Value", &tnwINIValue::value, &tnwINIValue::SetValue)
        .def("__repr__", [](const tnwINIValue& o) {
            return "<tnwINIValue " + o.Key() + "=" + o.value() + ">";
        });

    py::class_<tnwINISection, std::shared_ptr<tnwINISection>> oSection(m, "tnwINISection");
    oSection.def_property_readonly("Key", &tnwINISection::Key)
        .def("Item", &tnwINISection::Item, py::arg("key"))
        .def_property_readonly("Count", &tnwINISection::Count)
        .def("Clear", &tnwINISection::Clear)
        .def("Create", &tnwINISection::Create, py::arg("key"), py::arg("value") = "")
        .def("Remove", &tnwINISection::Remove, py::arg("key"))
        .def(
            "__setitem__",
            [](tnwINISection& o, const std::string& sKey, const std::string& sValue) {
                if (!o.Create(sKey, sValue)) o.Item(Variant(sKey))->SetValue(sValue);
            },
            "Sets the value of key, creating it when the section has none.");
    AddEntryProtocol(oSection);

    py::class_<tnwINIFile, std::shared_ptr<tnwINIFile>> oFile(m, "tnwINIFile");
    oFile
        .def(py::init([](py::object oFilename, TNW_Encoders_OpenModes eMode, bool bLoadContent) {
                 auto o = std::make_shared<tnwINIFile>();
                 o->SetLoadContent(bLoadContent);
                 if (!oFilename.is_none()) o->OpenINI(oFilename.cast<std::string>(), eMode);
                 return o;
             }),
             py::arg("filename") = py::none(), py::arg("mode") = TNW_OpenMode_OpenCreate,
             py::arg("load_content") = false,
             "With a filename, OpenINI(filename, mode) after LoadContent is set.")
        .def_property_readonly("Filename", &tnwINIFile::Filename)
        .def_property_readonly("ModeOpened", &tnwINIFile::ModeOpened)
        .def_property("LoadContent", &tnwINIFile::LoadContent, &tnwINIFile::SetLoadContent)
        .def("OpenINI", &tnwINIFile::OpenINI, py::arg("filename"),
             py::arg("mode") = TNW_Encoders_OpenModes{})
        .def("Save", &tnwINIFile::Save, py::arg("filename") = "")
        .def("Item", &tnwINIFile::Item, py::arg("key"))
        .def_property_readonly("Count", &tnwINIFile::Count)
        .def("Clear", &tnwINIFile::Clear)
        .def("Create", &tnwINIFile::Create, py::arg("key"))
        .def("Remove", &tnwINIFile::Remove, py::arg("key"))
        .def("__enter__", [](py::object o) { return o; })
        .def("__exit__", [](tnwINIFile& o, py::object oType, py::args) {
            if (oType.is_none()) o.Save();
        });
    AddEntryProtocol(oFile);
}

}  // namespace tnw::python
