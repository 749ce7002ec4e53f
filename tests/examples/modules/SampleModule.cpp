// One module in several states: SAMPLE_CASE is the name of the state, which ModuleLoaderTest.cpp expects.
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

#include "quillon/ModuleEntry.h"
#include "quillon/ParameterBinder.h"

namespace {

using namespace quillon;

struct Wordless : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

[[maybe_unused]] void Echo(const MethodParameters& parameters, InvocationResult& result) {
    std::string text;
    ParameterBinder binder(parameters, false, false);
    binder.AddMandatoryBinding("text", text);
    if (!binder.Bind(result)) return;
    if (text == "throw") throw std::runtime_error("thrown in a module");
    if (text == "throw nothing") throw Wordless();
    if (text == "fail") result.resultCode = 256;
    result.resultTable.AddRow(VariantList(Variant("Text", text)));
}

void Describe(IMethodMetadataBuilder& builder) {
    builder.Description("Answers with its parameter.")
        .CreateParameter("text", typeid(std::string))
        .Description("Any text.")
        .BindParameter()
        .CreateColumn("Text", typeid(std::string), false)
        .Description("The same text.")
        .BindColumn();
}

[[maybe_unused]] std::unique_ptr<IModule> Make(const char* name, MethodFunction run) {
    std::vector<Method> methods;
    methods.push_back(MakeMethod(name, IMethodMetadata::V5_0, &Describe, std::move(run)));
    return MakeModule(std::move(methods));
}

}  // namespace

#if defined(SAMPLE_GOOD)
QUILLON_MODULE("Sample", "1.0", [] { return Make("Sample.Echo", &Echo); })
#elif defined(SAMPLE_DUPLICATE)
QUILLON_MODULE("Sample", "1.0", [] { return Make("System.Echo", &Echo); })
#elif defined(SAMPLE_NAMELESS)
QUILLON_MODULE("Sample", "1.0", [] { return Make("Echo", &Echo); })
#elif defined(SAMPLE_WITHOUT_FUNCTION)
QUILLON_MODULE("Sample", "1.0", [] { return Make("Sample.Nothing", {}); })
#elif defined(SAMPLE_THROWS)
QUILLON_MODULE("Sample", "1.0", []() -> std::unique_ptr<IModule> { throw std::runtime_error("no device"); })
#elif defined(SAMPLE_STATIC_THROWS)
const struct Thrower {
    Thrower() { throw std::runtime_error("no driver"); }
} thrower;
QUILLON_MODULE("Sample", "1.0", [] { return Make("Sample.Never", &Echo); })
#elif defined(SAMPLE_STATIC_CRASHES)
const struct Crasher {
    Crasher() { std::abort(); }
} crasher;
QUILLON_MODULE("Sample", "1.0", [] { return Make("Sample.Never", &Echo); })
#elif defined(SAMPLE_STATIC_EXITS)
const struct Leaver {
    Leaver() { std::_Exit(0); }
} leaver;
QUILLON_MODULE("Sample", "1.0", [] { return Make("Sample.Never", &Echo); })
#elif defined(SAMPLE_NO_MODULE)
QUILLON_MODULE("Sample", "1.0", [] { return std::unique_ptr<IModule>(); })
#elif defined(SAMPLE_OLD)
extern "C" QUILLON_MODULE_EXPORT const ModuleEntry* QuillonModuleEntry() {
    static constexpr ModuleEntry entry = {0, "Sample", "0.1", nullptr, nullptr};
    return &entry;
}
#elif defined(SAMPLE_UNRESOLVED)
void NobodyDefinesThis();
QUILLON_MODULE("Sample", "1.0", [] {
    NobodyDefinesThis();
    return Make("Sample.Unresolved", &Echo);
})
#endif
