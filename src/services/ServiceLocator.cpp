#include "quillon/ServiceLocator.h"

#include <iostream>
#include <map>
#include <stdexcept>
#include <string_view>

#include "quillon/CLogger.h"

namespace quillon {

namespace {

using FactoryPair = std::pair<ServiceLocator::Factory, ServiceLocator::Recycler>;

struct Registry {
    std::map<std::string, void*, std::less<>> services;
    std::map<std::string, FactoryPair, std::less<>> factories;
};

/// Never destroyed: static objects of other modules may look services up, and
/// hand instances back, while the process ends.
Registry& TheRegistry() {
    static Registry& registry = *new Registry;
    return registry;
}

bool IsLogger(std::string_view id) { return id == ICLogger::__InterfaceId(); }

ICLogger* ProcessLogger() { return CLogger::HaveInstance() ? CLogger::GetInstance() : nullptr; }

/// A warning made of `before`, the identifier and `after`, on standard error.
void WarnOnStandardError(const char* before, const char* id, const char* after) {
    std::cerr << (std::string("Warning: ") + before + id + after) << std::endl;
}

void WarnNotFound(const char* id) {
    ICLogger* logger = IsLogger(id) ? nullptr : ProcessLogger();
    if (logger != nullptr) {
        logger->Warn("ServiceLocator failed to locate service with ID '%s'", id);
    } else {
        WarnOnStandardError("ServiceLocator failed to locate service with ID '", id, "'");
    }
}

void WarnAlreadyAdded(ICLogger* logger, const char* id) {
    if (logger != nullptr) {
        logger->Warn("Service '%s' has already been added", id);
    } else {
        WarnOnStandardError("Service '", id, "' has already been added");
    }
}

void WarnNotAdded(const char* id) {
    if (ICLogger* logger = ProcessLogger()) {
        logger->Warn("Service '%s' cannot be removed because it hasn't been added", id);
    } else {
        WarnOnStandardError("Service '", id, "' cannot be removed because it hasn't been added");
    }
}

FactoryPair& ExistingFactory(const std::string& id) {
    auto& factories = TheRegistry().factories;
    const auto found = factories.find(id);
    if (found != factories.end()) return found->second;

    CLogger::GetInstance()->Fatal("You need to register a ServiceLocator factory+recycler for %s",
                                  id.c_str());
    throw std::invalid_argument(id);
}

}  // namespace

void ServiceLocator::PutInternal(const char* id, void* service) {
    auto* logger =
        IsLogger(id) ? nullptr : static_cast<ICLogger*>(GetInternal(ICLogger::__InterfaceId(), false));
    auto& services = TheRegistry().services;
    if (services.contains(std::string_view(id))) WarnAlreadyAdded(logger, id);
    services[id] = service;
    if (logger != nullptr) logger->Debug("Registered service %s", id);
}

void* ServiceLocator::GetInternal(const char* id, bool quiet) {
    const auto& services = TheRegistry().services;
    const auto found = services.find(std::string_view(id));
    if (found != services.end()) return found->second;

    if (!quiet) WarnNotFound(id);
    return nullptr;
}

bool ServiceLocator::ContainsInternal(const char* id) {
    return TheRegistry().services.contains(std::string_view(id));
}

void* ServiceLocator::RemoveInternal(const char* id) {
    auto& services = TheRegistry().services;
    const auto found = services.find(std::string_view(id));
    if (found == services.end()) {
        WarnNotAdded(id);
        return nullptr;
    }
    void* const service = found->second;
    services.erase(found);
    return service;
}

std::string ServiceLocator::ListCurrentInternal() {
    const auto& services = TheRegistry().services;
    std::string list = "(" + std::to_string(services.size()) + ") ";
    for (const auto& [id, service] : services) list.append(id).push_back(' ');
    return list;
}

void ServiceLocator::Clear() {
    // The tables are empty before a callable's destructor, which is the host's, can look into them.
    const Registry old = std::exchange(TheRegistry(), Registry{});
}

void ServiceLocator::AddFactoryInternal(const std::string& id, Factory factory, Recycler recycler) {
    const auto [place, added] =
        TheRegistry().factories.try_emplace(id, std::move(factory), std::move(recycler));
    if (added) return;

    CLogger::GetInstance()->Fatal("You have already registered a ServiceLocator factory+recycler for %s",
                                  id.c_str());
    throw std::invalid_argument(id);
}

bool ServiceLocator::HasFactoryInternal(const std::string& id) {
    return TheRegistry().factories.contains(id);
}

void* ServiceLocator::GetInstanceInternal(const std::string& id) {
    const Factory factory = ExistingFactory(id).first;  // it may remove itself
    return factory();
}

ServiceLocator::Recycler ServiceLocator::GetRecyclerInternal(const std::string& id) {
    return ExistingFactory(id).second;
}

/// Runs while a shared pointer is destroyed, where an exception ends the process.
void ServiceLocator::RecycleInternal(const std::string& id, void* object) noexcept {
    try {
        const Recycler recycler = GetRecyclerInternal(id);  // which logs one that is missing
        try {
            recycler(object);
        } catch (...) {
            CLogger::GetInstance()->Fatal("The ServiceLocator recycler for %s failed: its object is lost",
                                          id.c_str());
        }
    } catch (...) {
    }
}

std::pair<ServiceLocator::Factory, ServiceLocator::Recycler> ServiceLocator::RemoveFactoryInternal(
    const std::string& id) {
    auto& factories = TheRegistry().factories;
    const auto found = factories.find(id);
    if (found == factories.end()) {
        CLogger::GetInstance()->Fatal(
            "There is no registered ServiceLocator factory+recycler for %s to remove", id.c_str());
        throw std::invalid_argument(id);
    }
    FactoryPair pair = std::move(found->second);
    factories.erase(found);
    return pair;
}

}  // namespace quillon
