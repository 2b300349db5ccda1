// The decoders. Each is its class with its own operations and properties; what they share for
// Python (iteration, rows(), read_columns(), RecordSource(), the context manager) comes from
// AddDecoderProtocol.
#include "Bindings.h"
#include "decoders/tnwDBFDecoder.h"
#include "decoders/tnwFGPDecoder.h"
#include "decoders/tnwShapeDecoder.h"
#include "delimited/tnwASCIIDecoder.h"

namespace tnw::python {
namespace {

// The geometry source of a row, shared by the two table readers.
template <class Decoder, class... Options>
void AddGeometryFields(py::class_<Decoder, Options...>& c) {
    c.def_property("GeometryFormat", &Decoder::GeometryFormat, &Decoder::SetGeometryFormat)
        .def_property("LonCol", &Decoder::LonCol, &Decoder::SetLonCol)
        .def_property("LatCol", &Decoder::LatCol, &Decoder::SetLatCol)
        .def_property("WKTCol", &Decoder::WKTCol, &Decoder::SetWKTCol)
        .def_property_readonly("Longitude", &Decoder::Longitude)
        .def_property_readonly("Latitude", &Decoder::Latitude)
        .def_property_readonly("WKT", &Decoder::WKT)
        .def_property("Filename", &Decoder::Filename, &Decoder::SetFilename)
        .def_property_readonly("IsValidFile", &Decoder::IsValidFile)
        .def_property_readonly("Columns", &Decoder::Columns)
        .def_property_readonly("Eof", &Decoder::Eof)
        .def_property_readonly("EOF", &Decoder::Eof)
        .def_property_readonly("CurrentRow", &Decoder::CurrentRow)
        .def("MoveFirst", &Decoder::MoveFirst)
        .def("MoveNext", &Decoder::MoveNext)
        .def("CloseFile", &Decoder::CloseFile);
}

}  // namespace

void BindDecoders(py::module_& m) {
    py::class_<tnwDBFDecoder, std::shared_ptr<tnwDBFDecoder>> oDBF(m, "tnwDBFDecoder");
    oDBF.def(py::init([](py::object oFilename) {
                 auto o = std::make_shared<tnwDBFDecoder>();
                 if (!oFilename.is_none()) o->SetFilename(oFilename.cast<std::string>());
                 return o;
             }),
             py::arg("filename") = py::none())
        .def_property_readonly("Schema", &tnwDBFDecoder::Schema)
        .def("FindColumnValue", &tnwDBFDecoder::FindColumnValue, py::arg("column"),
             py::arg("value"))
        .def("MoveToRecord", &tnwDBFDecoder::MoveToRecord, py::arg("record"));
    AddGeometryFields(oDBF);
    AddDecoderProtocol(oDBF);

    py::class_<tnwASCIIDecoder, std::shared_ptr<tnwASCIIDecoder>> oASCII(m, "tnwASCIIDecoder");
    oASCII
        .def(py::init([](py::object oFilename) {
                 auto o = std::make_shared<tnwASCIIDecoder>();
                 if (!oFilename.is_none()) o->SetFilename(oFilename.cast<std::string>());
                 return o;
             }),
             py::arg("filename") = py::none())
        .def_property("HeaderRows", &tnwASCIIDecoder::HeaderRows, &tnwASCIIDecoder::SetHeaderRows)
        .def_property("Delimiter", &tnwASCIIDecoder::Delimiter, &tnwASCIIDecoder::SetDelimiter)
        .def_property("LineFeedEndsLine", &tnwASCIIDecoder::LineFeedEndsLine,
                      &tnwASCIIDecoder::SetLineFeedEndsLine)
        .def_property_readonly("GPL", &tnwASCIIDecoder::GPL)
        .def_property_readonly("GPLStart", &tnwASCIIDecoder::GPLStart)
        .def_property_readonly("GPLEnd", &tnwASCIIDecoder::GPLEnd)
        .def_property_readonly("GPLCommand", &tnwASCIIDecoder::GPLCommand)
        .def_property_readonly("GPDString", &tnwASCIIDecoder::GPDString)
        .def_property_readonly("GPDSchema", &tnwASCIIDecoder::GPDSchema)
        .def_property_readonly("CurrentLine", &tnwASCIIDecoder::CurrentLine)
        .def_property_readonly("PercentComplete", &tnwASCIIDecoder::PercentComplete)
        .def(
            "ReadHeaders",
            [](tnwASCIIDecoder& o, std::int32_t lRow) -> py::object {
                const FieldArray aFields = o.ReadHeaders(lRow);
                if (!aFields.HasSize()) return py::none();  // the file is shorter
                py::list oFields;
                for (std::int32_t i = 0; i <= aFields.UBound(); ++i)
                    oFields.append(aFields.Item(i));
                return oFields;
            },
            py::arg("row") = 1, "The fields of line row; None when the file is shorter.")
        .def("AutoGenColumns", &tnwASCIIDecoder::AutoGenColumns,
             py::arg("flags") = TNW_AutoGenFlags_Default)
        .def("ColumnsFromString", &tnwASCIIDecoder::ColumnsFromString, py::arg("header"),
             py::arg("delimiter"));
    AddGeometryFields(oASCII);
    AddDecoderProtocol(oASCII);

    py::class_<tnwFGPDecoder, std::shared_ptr<tnwFGPDecoder>> oFGP(m, "tnwFGPDecoder");
    oFGP.def(py::init([](py::object oFilename) {
                 auto o = std::make_shared<tnwFGPDecoder>();
                 if (!oFilename.is_none()) o->SetFilename(oFilename.cast<std::string>());
                 return o;
             }),
             py::arg("filename") = py::none())
        .def_property("AsSites", &tnwFGPDecoder::AsSites, &tnwFGPDecoder::SetAsSites)
        .def_property("EmptyMissingRows", &tnwFGPDecoder::EmptyMissingRows,
                      &tnwFGPDecoder::SetEmptyMissingRows)
        .def_property("PointColumns", &tnwFGPDecoder::PointColumns, &tnwFGPDecoder::SetPointColumns)
        .def_property("Filename", &tnwFGPDecoder::Filename, &tnwFGPDecoder::SetFilename)
        .def("CloseFile", &tnwFGPDecoder::CloseFile)
        .def_property_readonly("IsValidFile", &tnwFGPDecoder::IsValidFile)
        .def_property_readonly("HasFSN", &tnwFGPDecoder::HasFSN)
        .def_property_readonly("HasFDT", &tnwFGPDecoder::HasFDT)
        .def_property_readonly("Columns", &tnwFGPDecoder::Columns)
        .def_property_readonly("FDTSchema", &tnwFGPDecoder::FDTSchema)
        .def_property_readonly("FDTString", &tnwFGPDecoder::FDTString)
        .def_property_readonly("WKT", &tnwFGPDecoder::WKT)
        .def_property_readonly("Longitude", &tnwFGPDecoder::Longitude)
        .def_property_readonly("Latitude", &tnwFGPDecoder::Latitude)
        .def_property_readonly("Altitude", &tnwFGPDecoder::Altitude)
        .def_property_readonly("Heading", &tnwFGPDecoder::Heading)
        .def_property_readonly("UTCTime", &tnwFGPDecoder::UTCTime)
        .def_property_readonly("AttributeID", &tnwFGPDecoder::AttributeID)
        .def_property_readonly("Rate_Act", &tnwFGPDecoder::Rate_Act)
        .def_property_readonly("Rate_Rx", &tnwFGPDecoder::Rate_Rx)
        .def_property_readonly("Swath", &tnwFGPDecoder::Swath)
        .def_property_readonly("PercentComplete", &tnwFGPDecoder::PercentComplete)
        .def_property_readonly("Eof", &tnwFGPDecoder::Eof)
        .def_property_readonly("EOF", &tnwFGPDecoder::Eof)
        .def_property_readonly("Phase", &tnwFGPDecoder::Phase)
        .def("MoveFirst", &tnwFGPDecoder::MoveFirst)
        .def("MoveNext", &tnwFGPDecoder::MoveNext)
        .def_property_readonly("RegionID", &tnwFGPDecoder::RegionID)
        .def_property_readonly("P_PARAM", &tnwFGPDecoder::P_PARAM)
        .def_property_readonly("V_PARAM", &tnwFGPDecoder::V_PARAM)
        .def_property_readonly("NDVI", &tnwFGPDecoder::NDVI)
        .def_property_readonly("VI_2ND", &tnwFGPDecoder::VI_2ND);
    AddDecoderProtocol(oFGP);

    py::class_<tnwShapeDecoder>(m, "tnwShapeDecoder")
        .def(py::init<>())
        .def(
            "GetShapeDetails",
            [](const tnwShapeDecoder& o, const std::string& sName) -> py::object {
                std::int32_t eType = 0;
                std::string sType;
                bool bCartesian = false;
                double dLeft = 0, dRight = 0, dTop = 0, dBottom = 0;
                if (!o.GetShapeDetails(sName, eType, sType, bCartesian, dLeft, dRight, dTop,
                                       dBottom))
                    return py::none();
                return py::make_tuple(eType, sType, bCartesian, dLeft, dRight, dTop, dBottom);
            },
            py::arg("name"),
            "(type, type text, cartesian, left, right, top, bottom) of a .shp file; None when "
            "it does not exist.")
        .def("GetESRIShapeType", &tnwShapeDecoder::GetESRIShapeType, py::arg("path"),
             py::arg("name"));
}

}  // namespace tnw::python
