// Uses that the compiler must refuse with a message; each is chosen by a definition. CASE_ALLOWED compiles.
#include <memory>

#include "quillon/DescribedBinder.h"
#include "quillon/ParameterBinder.h"
#include "quillon/TextFields.h"

using namespace quillon;

void Use(ParameterBinder& binder, DescribedBinder& described, TextToDataTableParser& parser,
         InvocationResult& result) {
    [[maybe_unused]] int number = 0;
    long long good = 0;
#if defined(CASE_BINDING)
    binder.AddBinding("a", &number, true);
#elif defined(CASE_MANDATORY)
    binder.AddMandatoryBinding("a", number);
#elif defined(CASE_OPTIONAL)
    std::optional<float> real;
    binder.AddOptionalBinding("a", real);
#elif defined(CASE_DESCRIBED)
    described.Add("a", number);
#elif defined(CASE_FIELD)
    parser.AddField<int>("a", std::make_unique<QuotedField>());
#elif defined(CASE_OWNING_FIELD)
    parser.AddField<const char*>("a", new QuotedField, 0);
#elif defined(CASE_IGNORED)
    binder.Bind(result);
#endif
    binder.AddOptionalBinding("b", good);
    described.Add("b", good);
    parser.AddField<long long>("b", std::make_unique<QuotedField>(), 1024);
    if (binder.Bind(result, ParameterFaults::All) && described.Bind(result)) result.resultCode = 1;
}
