#include "core/ItnwEncoder.h"

namespace tnw::detail {

bool ChangeColumnsIfSameLayout(std::shared_ptr<tnwColumns>& oCurrent,
                               std::shared_ptr<tnwColumns> oColumns) {
    if (!oCurrent || !oColumns) return false;
    if (oCurrent->LayoutText("") != oColumns->LayoutText("")) return false;
    oCurrent = std::move(oColumns);
    return true;
}

}  // namespace tnw::detail
