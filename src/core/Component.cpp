#include "core/Component.h"

#include <map>
#include <mutex>

#include "core/Error.h"
#include "core/GISLib.h"
#include "core/KeyedList.h"

namespace tnw {

namespace {

struct Registry {
    std::mutex mutex;
    std::map<std::string, ComponentCreator> creators;  // by folded program id
};

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}

}  // namespace

std::shared_ptr<IComponent> tnwObjectFactory::CreateComponent(std::string_view sProgramId,
                                                              std::string_view sFailureText) {
    ComponentCreator fnCreate;
    {
        Registry& registry = TheRegistry();
        std::lock_guard lock(registry.mutex);
        auto it = registry.creators.find(FoldCase(sProgramId));
        if (it != registry.creators.end()) fnCreate = it->second;
    }
    std::shared_ptr<IComponent> oComponent = fnCreate ? fnCreate() : nullptr;
    if (!oComponent && !sFailureText.empty())
        throw Error(errCantCreateObject, "tnwObjectFactory.CreateComponent",
                    std::string(sFailureText) + " (" + std::string(sProgramId) + ")");
    return oComponent;
}

ComponentCreator tnwObjectFactory::Register(std::string_view sProgramId,
                                            ComponentCreator fnCreate) {
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.mutex);
    std::string sKey = FoldCase(sProgramId);
    ComponentCreator fnOld;
    auto it = registry.creators.find(sKey);
    if (it != registry.creators.end()) {
        fnOld = std::move(it->second);
        registry.creators.erase(it);
    }
    if (fnCreate) registry.creators.emplace(std::move(sKey), std::move(fnCreate));
    return fnOld;
}

std::shared_ptr<tnwFileUtility> FileUtility() {
    auto oUtility = CreateAs<tnwFileUtility>(kProgIdFileUtility, "Missing Component");
    if (!oUtility) Raise(errCantCreateObject, "tnwObjectFactory.CreateComponent");
    return oUtility;
}

}  // namespace tnw
