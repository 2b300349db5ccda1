// The narrow interface through which a host drives any encoder without knowing its format.
// It can be created on its own: then every member does nothing.
//
// An encoder's own operations have richer signatures (Update gives a Boolean, Initialize takes
// the format's options), so the interface's members forward to private virtual hooks named
// ItnwEncoder_<member>. Called through an ItnwEncoder reference they run the interface's
// behaviour; called on the class they run the class's own operation, which hides them.
#pragma once

#include <memory>
#include <string>

#include "core/GISLib.h"

namespace tnw {

class ItnwEncoder {
public:
    virtual ~ItnwEncoder() = default;

    std::shared_ptr<tnwColumns> Columns() const { return ItnwEncoder_Columns(); }
    void SetGeometry(std::shared_ptr<IGeometry> oGeometry) {
        ItnwEncoder_SetGeometry(std::move(oGeometry));
    }
    void Update() { ItnwEncoder_Update(); }
    void CloseFiles() { ItnwEncoder_CloseFiles(); }
    bool ImportRS(const std::string& sFilename, std::shared_ptr<tnwRecordSource> oRS) {
        return ItnwEncoder_ImportRS(sFilename, std::move(oRS));
    }
    bool Initialize(const std::string& sFilename, std::shared_ptr<tnwColumns> oColumns) {
        return ItnwEncoder_Initialize(sFilename, std::move(oColumns));
    }
    bool ChangeColumns(std::shared_ptr<tnwColumns> oColumns) {
        return ItnwEncoder_ChangeColumns(std::move(oColumns));
    }
    std::string Filename() const { return ItnwEncoder_Filename(); }

private:
    virtual std::shared_ptr<tnwColumns> ItnwEncoder_Columns() const { return nullptr; }
    virtual void ItnwEncoder_SetGeometry(std::shared_ptr<IGeometry>) {}
    virtual void ItnwEncoder_Update() {}
    virtual void ItnwEncoder_CloseFiles() {}
    virtual bool ItnwEncoder_ImportRS(const std::string&, std::shared_ptr<tnwRecordSource>) {
        return false;
    }
    virtual bool ItnwEncoder_Initialize(const std::string&, std::shared_ptr<tnwColumns>) {
        return false;
    }
    virtual bool ItnwEncoder_ChangeColumns(std::shared_ptr<tnwColumns>) { return false; }
    virtual std::string ItnwEncoder_Filename() const { return {}; }
};

namespace detail {

// The ChangeColumns flow shared by the encoders: a swap is accepted only when the layout text
// of the new columns equals that of the current ones exactly.
bool ChangeColumnsIfSameLayout(std::shared_ptr<tnwColumns>& oCurrent,
                               std::shared_ptr<tnwColumns> oColumns);

// The record-source import flow shared by the encoders: nothing to import gives False;
// fnInitialize opens the output on the source's own columns; then each record's geometry and
// Update, whose result is not consulted. Failures of the source pass to the caller.
template <class Encoder, class Init>
bool ImportRecords(Encoder& oEncoder, const std::shared_ptr<tnwRecordSource>& oRS,
                   Init&& fnInitialize) {
    if (!oRS) return false;
    if (!fnInitialize(oRS->Columns())) return false;
    oRS->MoveFirst();
    while (!oRS->Eof()) {
        oEncoder.SetGeometry(oRS->Geometry());
        oEncoder.Update();
        oRS->MoveNext();
    }
    return true;
}

}  // namespace detail
}  // namespace tnw
