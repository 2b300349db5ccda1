// Components made by program id: the base of every outside object, and the registry that
// stands for the platform's creation of a component from its program identifier.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tnw {

// Every object that can be made by program id derives from this; callers ask for an
// interface with std::dynamic_pointer_cast.
class IComponent {
public:
    virtual ~IComponent() = default;
};

using ComponentCreator = std::function<std::shared_ptr<IComponent>()>;

// The shared object factory. Hosts, the stand-ins and tests register program ids here.
class tnwObjectFactory {
public:
    // Makes the component. An unknown id gives nothing when sFailureText is empty, and raises
    // error 429 with sFailureText as description otherwise.
    static std::shared_ptr<IComponent> CreateComponent(std::string_view sProgramId,
                                                       std::string_view sFailureText);

    // Registers or replaces the creator of a program id (case-insensitive); an empty creator
    // removes it. Gives the creator that was there before, so tests can put it back.
    static ComponentCreator Register(std::string_view sProgramId, ComponentCreator fnCreate);
};

// CreateComponent and ask for interface T; nothing when the component lacks the interface.
template <class T>
std::shared_ptr<T> CreateAs(std::string_view sProgramId, std::string_view sFailureText) {
    auto oComponent = tnwObjectFactory::CreateComponent(sProgramId, sFailureText);
    return std::dynamic_pointer_cast<T>(oComponent);
}

}  // namespace tnw
