#include "platform/RegistryApi.h"

#include <utility>

#include "platform/Replaceable.h"

namespace quillon::platform {

namespace {

Replaceable<RegistryCalls>& Current() {
    static auto& calls = *new Replaceable<RegistryCalls>(SystemRegistryCalls());
    return calls;
}

}  // namespace

void RegistryTraits::Close(Type value) noexcept { Current().Get().close(value); }

RegistryKey OpenMachineKey(const std::string& path) { return RegistryKey(Current().Get().open(path)); }

std::uint32_t QueryValue(HKEY key, const char* name, void* buffer, std::uint32_t& size) {
    return Current().Get().query(key, name, buffer, size);
}

void ReplaceRegistryCalls(RegistryCalls calls) { Current().Replace(std::move(calls)); }

}  // namespace quillon::platform
