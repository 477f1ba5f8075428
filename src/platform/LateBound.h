#pragma once
// Objects reached by the names of their properties at run time, as the
// runtime's late binding reaches them: the printer that the print dialog works
// on, the window that a dialog is centred on. Names compare without regard to
// case.
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>

#include "platform/Variant.h"

inline constexpr int32_t vbErrNoSuchMember = 438;

class ILateBound {
public:
    virtual ~ILateBound() = default;
    // Both raise error 438, "Object doesn't support this property or method",
    // for a name the object has no property of.
    virtual Variant GetProperty(const std::string& name) const = 0;
    virtual void LetProperty(const std::string& name, const Variant& value) = 0;
};

// An object with the properties it was made with, and no others.
class PropertyBag : public ILateBound {
public:
    PropertyBag() = default;
    PropertyBag(std::initializer_list<std::pair<const std::string, Variant>> properties);

    Variant GetProperty(const std::string& name) const override;
    void LetProperty(const std::string& name, const Variant& value) override;
    bool Has(const std::string& name) const;

private:
    // Keyed by the upper-case name.
    std::map<std::string, Variant> properties_;
};

// A window as an object: its one property is "hWnd".
class WindowObject : public PropertyBag {
public:
    explicit WindowObject(int32_t hWnd) : PropertyBag{{"hWnd", Variant(hWnd)}} {}
};

// Late-bound reads and writes whose failures are passed over: a null object, a
// name it lacks, a value that does not convert. Each says whether it worked,
// and leaves `value` alone when it did not.
bool TryGetLong(const ILateBound* object, const std::string& name, int32_t& value);
bool TryGetText(const ILateBound* object, const std::string& name, std::string& value);
bool TryLetProperty(ILateBound* object, const std::string& name, const Variant& value);
