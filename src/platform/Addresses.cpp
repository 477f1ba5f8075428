#include "platform/Addresses.h"

#include <unordered_map>

namespace {

std::unordered_map<const void*, int32_t> g_numbers;
std::unordered_map<int32_t, const void*> g_objects;
// Numbers step by 32 from a base that looks like an address of the heap.
int32_t g_last = 0x00140000;
constexpr int32_t kStep = 32;

}  // namespace

int32_t AddressOf(const void* object) {
    if (object == nullptr) return 0;
    const auto it = g_numbers.find(object);
    if (it != g_numbers.end()) return it->second;
    // A run that names more than 60 million objects starts again from the
    // base; the numbers of objects still named are skipped.
    do {
        g_last = g_last > INT32_MAX - kStep ? 0x00140000 : g_last + kStep;
    } while (g_objects.count(g_last) != 0);
    g_numbers.emplace(object, g_last);
    g_objects.emplace(g_last, object);
    return g_last;
}

void* ObjectAt(int32_t address) {
    const auto it = g_objects.find(address);
    return it != g_objects.end() ? const_cast<void*>(it->second) : nullptr;
}

void ForgetAddress(const void* object) {
    const auto it = g_numbers.find(object);
    if (it == g_numbers.end()) return;
    g_objects.erase(it->second);
    g_numbers.erase(it);
}
