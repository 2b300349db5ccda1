// Columns: the column list of the GIS object library (the stand-in's, made by program id) and
// its columns. Properties are attributes; the list is also a sequence and a mapping by key.
#include "Bindings.h"
#include "core/Component.h"

#include <optional>

namespace tnw::python {
namespace {

struct TypeDefaults {
    std::int16_t iSize;
    std::int16_t iPrecision;
    std::int32_t lFlags;
};

// What a dBase table makes of a column of each type when the host says nothing more.
TypeDefaults DefaultsOf(std::int32_t lType) {
    switch (lType) {
        case vtInt16:
            return {6, 0, tnwFlagNumeric};
        case vtInt32:
            return {11, 0, tnwFlagNumeric};
        case vtFloat:
        case vtDouble:
            return {16, 4, tnwFlagNumeric};
        case vtDate:
            return {8, 0, tnwFlagDate};
        case vtBoolean:
            return {1, 0, tnwFlagLogical};
        default:
            return {254, 0, tnwFlagText};
    }
}

std::shared_ptr<tnwColumn> AddColumn(tnwColumns& o, const std::string& sKey,
                                     const std::string& sName, const std::string& sDescription,
                                     std::int32_t lType, std::optional<std::int16_t> iSize,
                                     std::optional<std::int16_t> iPrecision,
                                     std::optional<std::int32_t> lFlags, std::int32_t lKind,
                                     std::int32_t lUnit, const std::string& sTag, bool bVisible,
                                     bool bActive, std::optional<Variant> vDefault) {
    const TypeDefaults t = DefaultsOf(lType);
    return o.Add(sKey, sName, sDescription, lType, iSize.value_or(t.iSize),
                 iPrecision.value_or(t.iPrecision), lFlags.value_or(t.lFlags), lKind, lUnit, sTag,
                 bVisible, bActive, vDefault.value_or(Variant::Absent()));
}

}  // namespace

void BindColumns(py::module_& m) {
    py::class_<tnwColumn, std::shared_ptr<tnwColumn>>(m, "tnwColumn")
        .def_property_readonly("Key", &tnwColumn::Key)
        .def_property_readonly("Name", &tnwColumn::Name)
        .def_property_readonly("Description", &tnwColumn::Description)
        .def_property_readonly("Type", &tnwColumn::Type)
        .def_property_readonly("Size", &tnwColumn::Size)
        .def_property_readonly("Precision", &tnwColumn::Precision)
        .def_property_readonly("Kind", &tnwColumn::Kind)
        .def_property_readonly("Flags", &tnwColumn::Flags)
        .def_property_readonly("Unit", &tnwColumn::Unit)
        .def_property_readonly("Tag", &tnwColumn::Tag)
        .def_property("Visible", &tnwColumn::Visible, &tnwColumn::SetVisible)
        .def_property("Active", &tnwColumn::Active, &tnwColumn::SetActive)
        .def_property_readonly("Default", &tnwColumn::Default)
        .def_property("Position", &tnwColumn::Position, &tnwColumn::SetPosition)
        .def_property("Value", &tnwColumn::Value, &tnwColumn::SetValue)
        .def("SetValue", &tnwColumn::SetValue, py::arg("value"))
        .def_property_readonly("Text", &tnwColumn::Text)
        .def("ToXML", &tnwColumn::ToXML, py::arg("indent") = "")
        .def("SetSource", &tnwColumn::SetSource, py::arg("source"), py::arg("position"))
        .def("__repr__", [](const tnwColumn& o) {
            return "<tnwColumn " + o.Key() + " type " + std::to_string(o.Type()) + ">";
        });

    py::class_<tnwColumns, std::shared_ptr<tnwColumns>>(m, "tnwColumns")
        .def(py::init([] { return CreateAs<tnwColumns>(kProgIdColumns, "Missing Component"); }))
        .def_property_readonly("Count", &tnwColumns::Count)
        .def("Item", &tnwColumns::Item, py::arg("key"))
        .def_property_readonly("Items", &tnwColumns::Items)
        .def("Add", &AddColumn, py::arg("key"), py::arg("name") = "", py::arg("description") = "",
             py::arg("type") = static_cast<std::int32_t>(vtString), py::arg("size") = py::none(),
             py::arg("precision") = py::none(), py::arg("flags") = py::none(), py::arg("kind") = 1,
             py::arg("unit") = 0, py::arg("tag") = "", py::arg("visible") = true,
             py::arg("active") = true, py::arg("default") = py::none(),
             "A new column, or None when the key is there already. Size, precision and flags "
             "not given follow the type.")
        .def("AddColumn", &tnwColumns::AddColumn, py::arg("column"))
        .def("Clear", &tnwColumns::Clear)
        .def("LayoutText", &tnwColumns::LayoutText, py::arg("prefix") = "")
        .def("__len__", &tnwColumns::Count)
        .def(
            "__iter__",
            [](const tnwColumns& o) {
                return py::make_iterator(o.Items().begin(), o.Items().end());
            },
            py::keep_alive<0, 1>())
        .def("__contains__",
             [](const tnwColumns& o, const std::string& sKey) { return o.Item(sKey) != nullptr; })
        .def("__getitem__",
             [](const tnwColumns& o, py::handle oKey) {
                 if (py::isinstance<py::str>(oKey)) {
                     auto oColumn = o.Item(oKey.cast<std::string>());
                     if (!oColumn) throw py::key_error(oKey.cast<std::string>());
                     return oColumn;
                 }
                 auto lIndex = oKey.cast<std::int64_t>();
                 const auto nCount = static_cast<std::int64_t>(o.Items().size());
                 if (lIndex < 0) lIndex += nCount;
                 if (lIndex < 0 || lIndex >= nCount) throw py::index_error();
                 return o.Items()[static_cast<std::size_t>(lIndex)];
             })
        .def("keys", [](const tnwColumns& o) {
            py::list oKeys;
            for (const auto& oColumn : o.Items())
                oKeys.append(oColumn->Key());
            return oKeys;
        });
}

}  // namespace tnw::python
