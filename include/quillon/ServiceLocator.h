#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "quillon/Export.h"

namespace quillon {

/// The process-wide registry of services (long-lived objects that it does not
/// own) and of factories (pairs of functions that make and take back short-lived
/// objects). Both are keyed by an interface identifier: "VntItf_" and the
/// interface's class name, which the interface gives as `__InterfaceId()`.
///
/// No lock: look-ups may run on any number of threads at once; everything that
/// changes the registry happens before worker threads start or after they end.
/// Misuse of services warns (on the registered or process-wide logger, else on
/// standard error); misuse of factories is logged at Fatal and thrown as
/// std::invalid_argument whose text is the identifier.
class QUILLON_API ServiceLocator {
public:
    using Factory = std::function<void*()>;
    using Recycler = std::function<void(void*)>;

    ServiceLocator() = delete;

    /// Registers `service`, replacing (with a warning) one registered before.
    template <class T>
    static void Put(T* service) {
        PutInternal(T::__InterfaceId(), service);
    }

    /// The registered object, null when there is none (with a warning unless `quiet`).
    template <class T>
    static T* Get(bool quiet = false) {
        return static_cast<T*>(GetInternal(T::__InterfaceId(), quiet));
    }

    template <class T>
    static bool Contains() {
        return ContainsInternal(T::__InterfaceId());
    }

    /// Takes the registered object back; null, with a warning, when there is none.
    template <class T>
    static T* Remove() {
        return static_cast<T*>(RemoveInternal(T::__InterfaceId()));
    }

    /// "(N) " and the identifiers of all services in byte order, each followed by a blank.
    static std::string ListCurrent() { return ListCurrentInternal(); }

    /// Empties both tables. Services are not deleted, recyclers are not called.
    static void Clear();

    template <class T>
    static void AddFactory(std::function<T*()> factory, std::function<void(T*)> recycler) {
        AddFactoryInternal(T::__InterfaceId(), Untyped<T>(std::move(factory)),
                           Untyped<T>(std::move(recycler)));
    }

    template <class T>
    static bool HasFactory() {
        return HasFactoryInternal(T::__InterfaceId());
    }

    /// A new object; when its last reference goes, the recycler that is registered
    /// at that moment takes it back. One that is missing or throws loses the object, with a Fatal entry.
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

    /// Removes the pair and returns it, factory first.
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
