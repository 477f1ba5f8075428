#include "winsupport/ISubclass.h"

#include <unordered_map>

namespace {

std::unordered_map<int32_t, ISubclass*>& Clients() {
    static std::unordered_map<int32_t, ISubclass*> clients;
    return clients;
}

// Addresses count up in steps of 4 and are never handed out twice.
int32_t g_lastAddress = 0x20000;

}  // namespace

ISubclass::ISubclass() : address_(g_lastAddress += 4) { Clients().emplace(address_, this); }

ISubclass::~ISubclass() { Clients().erase(address_); }

ISubclass* ISubclass::FromAddress(int32_t lAddress) {
    const auto it = Clients().find(lAddress);
    return it != Clients().end() ? it->second : nullptr;
}
