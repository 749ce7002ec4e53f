#include "quillon/IProviderRegistry.h"

namespace quillon {

IProvider::~IProvider() = default;
IProviderRegistry::~IProviderRegistry() = default;

}  // namespace quillon
