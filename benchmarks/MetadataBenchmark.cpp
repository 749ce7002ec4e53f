#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "quillon/MethodMetadataBuilder.h"
#include "quillon/ParameterBinder.h"
#include "quillon/ServiceLocator.h"

namespace quillon {
namespace {

constexpr std::size_t kDescribed = 20;
constexpr const char* kNames[kDescribed] = {"p01", "p02", "p03", "p04", "p05", "p06", "p07",
                                            "p08", "p09", "p10", "p11", "p12", "p13", "p14",
                                            "p15", "p16", "p17", "p18", "p19", "p20"};
constexpr const char* kText = "What the parameter is for, in one sentence of usual length.";

struct PlainParameter {
    std::string name, type, description, defaultValue, note;
    std::vector<std::string> introduced;
};

/// Describes and reads a method of twenty parameters kept as plain texts.
void DescribePlainly(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<PlainParameter> parameters;
        for (const char* name : kNames)
            parameters.push_back(
                {name, "string", kText, "default", kText, std::vector<std::string>(6, "3.0")});
        for (const PlainParameter& parameter : parameters) {
            benchmark::DoNotOptimize(parameter.description.data());
            for (const std::string& version : parameter.introduced) benchmark::DoNotOptimize(version.data());
        }
    }
}

void RegisterFactories() {
    if (ServiceLocator::HasFactory<IMethodParameterBuilder>()) return;
    ServiceLocator::AddFactory<IMethodParameterBuilder>(
        [] { return new MethodParameterBuilder; }, [](IMethodParameterBuilder* builder) { delete builder; });
}

std::unique_ptr<IMethodMetadata> DescribedMethod() {
    MethodMetadataBuilder builder;
    builder.MethodName("Module.Method");
    for (const char* name : kNames) {
        builder.CreateParameter(name, typeid(std::string))
            .Description(kText)
            .OptionalValue("default")
            .Note(kText)
            .Introduced(IMethodMetadataReader::V3_0, {})
            .BindParameter();
    }
    return builder.Build();
}

void Describe(benchmark::State& state) {
    RegisterFactories();
    for (auto _ : state) {
        const std::unique_ptr<IMethodMetadata> method = DescribedMethod();
        method->VisitParameter([](const char* name, const MethodParameter& parameter) {
            Variant value;
            parameter.GetOptionalValue(value);
            benchmark::DoNotOptimize(name);
            benchmark::DoNotOptimize(parameter.Type());
            parameter.VisitNote([](const char* text) { benchmark::DoNotOptimize(text); });
            parameter.VisitIntroduced(
                [](const char*, const char* version) { benchmark::DoNotOptimize(version); });
        });
    }
}

MethodParameters Call() {
    MethodParameters call;
    for (int i = 0; i < 5; ++i) {
        call.scalars.Add(kNames[2 * i], "a value of some length, as paths are");
        call.scalars.Add(kNames[2 * i + 1], static_cast<long long>(i));
    }
    return call;
}

struct Targets {
    std::string texts[5];
    long long integers[5] = {};
};

void FindByName(benchmark::State& state) {
    const MethodParameters call = Call();
    for (auto _ : state) {
        Targets targets;
        for (int i = 0; i < 5; ++i) {
            const Variant* text = call.scalars.Find(kNames[2 * i]);
            if (text != nullptr) targets.texts[i] = text->GetStringValue();
            const Variant* integer = call.scalars.Find(kNames[2 * i + 1]);
            if (integer != nullptr) targets.integers[i] = integer->GetLongLongValue();
        }
        benchmark::DoNotOptimize(&targets);
    }
}

void Bind(benchmark::State& state) {
    const MethodParameters call = Call();
    for (auto _ : state) {
        Targets targets;
        InvocationResult result;
        ParameterBinder binder(call, false, false);
        for (int i = 0; i < 5; ++i) {
            binder.AddMandatoryBinding(kNames[2 * i], targets.texts[i]);
            binder.AddMandatoryBinding(kNames[2 * i + 1], targets.integers[i]);
        }
        if (!binder.Bind(result)) std::abort();
        benchmark::DoNotOptimize(&targets);
    }
}

BENCHMARK(DescribePlainly)->Name("describe/baseline");
BENCHMARK(Describe)->Name("describe/quillon");
BENCHMARK(FindByName)->Name("bind/baseline");
BENCHMARK(Bind)->Name("bind/quillon");

}  // namespace
}  // namespace quillon

BENCHMARK_MAIN();
