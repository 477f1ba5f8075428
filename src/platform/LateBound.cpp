#include "platform/LateBound.h"

#include "platform/Runtime.h"

namespace {

[[noreturn]] void NoSuchMember() {
    RaiseError(vbErrNoSuchMember, {}, "Object doesn't support this property or method");
}

}  // namespace

PropertyBag::PropertyBag(std::initializer_list<std::pair<const std::string, Variant>> properties) {
    for (const auto& [name, value] : properties) properties_[VbUCase(name)] = value;
}

Variant PropertyBag::GetProperty(const std::string& name) const {
    const auto it = properties_.find(VbUCase(name));
    if (it == properties_.end()) NoSuchMember();
    return it->second;
}

void PropertyBag::LetProperty(const std::string& name, const Variant& value) {
    const auto it = properties_.find(VbUCase(name));
    if (it == properties_.end()) NoSuchMember();
    it->second = value;
}

bool PropertyBag::Has(const std::string& name) const { return properties_.count(VbUCase(name)) != 0; }

bool TryGetLong(const ILateBound* object, const std::string& name, int32_t& value) {
    return object != nullptr && PassOver([&] { value = object->GetProperty(name).ToLong(); });
}

bool TryGetText(const ILateBound* object, const std::string& name, std::string& value) {
    return object != nullptr && PassOver([&] { value = object->GetProperty(name).ToString(); });
}

bool TryLetProperty(ILateBound* object, const std::string& name, const Variant& value) {
    return object != nullptr && PassOver([&] { object->LetProperty(name, value); });
}
