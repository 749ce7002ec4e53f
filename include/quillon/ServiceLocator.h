#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "quillon/Export.h"

namespace quillon {

/// Registers, for the whole process, services (long-lived objects, which it does not own) and factories
/// (pairs of functions that make short-lived objects and take them back). The key of both is an
/// interface identifier: "VntItf_" and the interface's class name, which the interface returns from
/// `__InterfaceId()`.
///
/// There is no lock: look-ups may run on any number of threads at once, and everything that changes the
/// registry happens before worker threads start or after they end. Misuse of a service is a Warn entry
/// (on the process-wide logger of CLogger.h, for Put() on the registered one; without a logger a line on
/// standard error). Misuse of a factory is a Fatal entry on the process-wide logger, which is made for
/// it if need be, and throws std::invalid_argument whose text is the identifier.
///
/// @code
/// ServiceLocator::Put<ICLogger>(CLogger::GetInstance());  // #include "quillon/CLogger.h"
/// if (auto* const logger = ServiceLocator::Get<ICLogger>()) logger->Info("%s", "registered");
/// ServiceLocator::Remove<ICLogger>();
/// @endcode
class QUILLON_API ServiceLocator {
public:
    /// Make an object, and take it back, as pointers to the interface without its type.
    using Factory = std::function<void*()>;
    using Recycler = std::function<void(void*)>;

    ServiceLocator() = delete;

    /// Registers `service`, which must live until it is removed, and logs that at Debug unless it is the
    /// logger. One that was registered before is replaced, with the warning "Service '%s' has already
    /// been added".
    template <class T>
    static void Put(T* service) {
        PutInternal(T::__InterfaceId(), service);
    }

    /// Returns the registered object; null, with a warning unless `quiet`, when there is none.
    template <class T>
    static T* Get(bool quiet = false) {
        return static_cast<T*>(GetInternal(T::__InterfaceId(), quiet));
    }

    /// Returns whether an object is registered, without a warning.
    template <class T>
    static bool Contains() {
        return ContainsInternal(T::__InterfaceId());
    }

    /// Removes the registered object and returns it; null, with a warning, when there is none.
    template <class T>
    static T* Remove() {
        return static_cast<T*>(RemoveInternal(T::__InterfaceId()));
    }

    /// Returns "(N) " and the identifiers of all services in byte order, each followed by a blank.
    static std::string ListCurrent() { return ListCurrentInternal(); }

    /// Empties both tables. Services are not deleted, recyclers are not called.
    static void Clear();

    /// Registers a pair of functions, which may run on any thread. A second pair for one interface
    /// throws.
    template <class T>
    static void AddFactory(std::function<T*()> factory, std::function<void(T*)> recycler) {
        AddFactoryInternal(T::__InterfaceId(), Untyped<T>(std::move(factory)),
                           Untyped<T>(std::move(recycler)));
    }

    /// Returns whether a pair is registered, without an entry.
    template <class T>
    static bool HasFactory() {
        return HasFactoryInternal(T::__InterfaceId());
    }

    /// Returns a new object of the factory, which may be null; throws without a factory. When the last
    /// reference goes, on whatever thread, the recycler that is registered at that moment takes the
    /// object back. A recycler that is missing or throws loses the object, with a Fatal entry.
    template <class T>
    static std::shared_ptr<T> GetInstance() {
        const std::string id = T::__InterfaceId();
        // Before the object, which nobody would release if making this failed.
        auto recycle = [key = std::string(id)](T* object) {
            if (object != nullptr) RecycleInternal(key, object);
        };
        T* const object = static_cast<T*>(GetInstanceInternal(id));
        return std::shared_ptr<T>(object, std::move(recycle));
    }

    /// Removes the pair and returns it, the factory first; throws when there is none.
    template <class T>
    static std::pair<Factory, Recycler> RemoveFactory() {
        return RemoveFactoryInternal(T::__InterfaceId());
    }

private:
    template <class T>
    static Factory Untyped(std::function<T*()> factory) {
        if (!factory) return {};
        return [factory = std::move(factory)]() -> void* { return factory(); };
    }

    template <class T>
    static Recycler Untyped(std::function<void(T*)> recycler) {
        if (!recycler) return {};
        return [recycler = std::move(recycler)](void* object) { recycler(static_cast<T*>(object)); };
    }

    static void PutInternal(const char* id, void* service);
    static void* GetInternal(const char* id, bool quiet);
    static bool ContainsInternal(const char* id);
    static void* RemoveInternal(const char* id);
    static std::string ListCurrentInternal();
    static void AddFactoryInternal(const std::string& id, Factory factory, Recycler recycler);
    static bool HasFactoryInternal(const std::string& id);
    static void* GetInstanceInternal(const std::string& id);
    static Recycler GetRecyclerInternal(const std::string& id);
    static void RecycleInternal(const std::string& id, void* object) noexcept;
    static std::pair<Factory, Recycler> RemoveFactoryInternal(const std::string& id);
};

}  // namespace quillon
