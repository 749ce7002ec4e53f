#include "host/ModuleLoader.h"

#include <algorithm>
#include <exception>
#include <set>
#include <utility>
#include <vector>

#include "common/Failure.h"
#include "quillon/ErrorHelper.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/ModuleEntry.h"
#include "quillon/PathUtils.h"
#include "quillon/ServiceLocator.h"
#include "system/SharedLibrary.h"

namespace quillon::agent {

namespace {

using MethodNames = std::set<std::string>;

/// Owns a module that its library has made, and deletes it there.
class LoadedModule final : public IModule {
public:
    explicit LoadedModule(const ModuleEntry& entry) : m_entry(entry), m_module(entry.create()) {}
    ~LoadedModule() override { m_entry.destroy(m_module); }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    bool IsMade() const { return m_module != nullptr; }
    const std::vector<Method>& GetMethods() const override { return m_module->GetMethods(); }

private:
    const ModuleEntry& m_entry;
    IModule* const m_module;
};

std::string CheckEntry(const ModuleEntry* entry) {
    if (entry == nullptr) return "it has no entry";
    if (entry->interfaceVersion == kModuleInterfaceVersion) return {};
    return "it was built for version " + std::to_string(entry->interfaceVersion) +
           " of the modules' interface, and the agent has version " + std::to_string(kModuleInterfaceVersion);
}

/// Is a name of the form "Module.Method".
bool IsMethodName(const std::string& name) {
    const std::size_t dot = name.find('.');
    const auto isNamePart = [](unsigned char c) { return c > ' ' && c < 0x7F; };
    return dot != 0 && dot != std::string::npos && dot + 1 < name.size() &&
           std::all_of(name.begin(), name.end(), isNamePart);
}

/// Adds the method's name to those that are taken, or returns what is wrong with it.
std::string TakeName(const Method& method, MethodNames& names) {
    if (method.metadata == nullptr || method.metadata->MethodName() == nullptr) return "a method has no name";
    const std::string name = method.metadata->MethodName();
    if (!IsMethodName(name)) return "'" + name + "' is no name of a method";
    if (!method.run) return "method '" + name + "' has no function";
    return names.insert(name).second ? "" : "method '" + name + "' is there already";
}

std::string TakeNames(const IModule& module, MethodNames& names) {
    std::string fault;
    for (const Method& method : module.GetMethods()) {
        fault = TakeName(method, names);
        if (!fault.empty()) break;
    }
    return fault;
}

/// Makes the module of an entry and appends it, or returns why not.
std::string AddModule(const ModuleEntry& entry, ModuleList& modules, MethodNames& names) {
    auto module = std::make_unique<LoadedModule>(entry);
    if (!module->IsMade()) return "it made no module";
    MethodNames all = names;
    std::string fault = TakeNames(*module, all);
    if (!fault.empty()) return fault;
    modules.push_back(std::move(module));
    names = std::move(all);
    return {};
}

/// Runs the library's own code, which may throw anything.
std::string StartModule(ModuleEntryFunction function, ModuleList& modules, MethodNames& names) {
    try {
        const ModuleEntry* const entry = function();
        std::string fault = CheckEntry(entry);
        return fault.empty() ? AddModule(*entry, modules, names) : fault;
    } catch (const std::exception& error) {
        return "it threw: " + std::string(ErrorHelper::GetExceptionMessage(error));
    } catch (...) {
        return "it threw something that is no std::exception";
    }
}

std::string LoadModule(const std::string& path, ModuleList& modules, MethodNames& names) {
    std::string fault;
    void* const function = LoadFunction(path, kModuleEntryName, fault);
    if (function == nullptr) return fault;
    return StartModule(reinterpret_cast<ModuleEntryFunction>(function), modules, names);
}

MethodNames NamesOf(const ModuleList& modules) {
    MethodNames names;
    for (const auto& module : modules) TakeNames(*module, names);
    return names;
}

void Warn(const std::string& path, const std::string& fault) {
    ServiceLocator::Get<ICLogger>()->Warn("Module '%s' is not loaded: %s", LogText::OneLine(path).c_str(),
                                          LogText::OneLine(fault).c_str());
}

std::vector<std::string> FindLibraries(const std::string& directory) {
    std::vector<std::string> files;
    const std::string pattern =
        PathUtils::CombinePaths(directory, std::string("*") + kSharedLibraryEnd, PathUtils::PathSep);
    FileSystemUtils::FindFiles(pattern, &files);
    const std::string fault = LastFailure({kFileNotFound});
    if (!fault.empty())
        ServiceLocator::Get<ICLogger>()->Warn("The modules in '%s' cannot be listed: %s",
                                              LogText::OneLine(directory).c_str(),
                                              LogText::OneLine(fault).c_str());
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

void LoadModules(const std::string& directory, ModuleList& modules) {
    const std::string fault = FindForeignWriter(directory);
    if (!fault.empty()) return Warn(directory, fault);
    MethodNames names = NamesOf(modules);
    for (const std::string& file : FindLibraries(directory)) {
        const std::string reason = LoadModule(file, modules, names);
        if (!reason.empty()) Warn(file, reason);
    }
}

}  // namespace quillon::agent
