#include "modules/Modules.h"

#include <string_view>
#include <utility>

#include "modules/Assignments.h"
#include "modules/Describe.h"
#include "modules/WmiCall.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }

/// Returns where the word FROM of a query in lower case stands, which a name may hold as well.
std::size_t FindFrom(const std::string& query) {
    constexpr std::string_view kWord = "from";
    std::size_t at = query.find(kWord, 1);
    while (at != std::string::npos && !(IsBlank(query[at - 1]) && IsBlank(query[at + kWord.size()])))
        at = query.find(kWord, at + 1);
    return at;
}

/// Returns the properties that a query names; none when it asks for all.
std::vector<std::string> SelectedProperties(const std::string& wql) {
    const std::string lower = StringUtils::ToLowercase(wql);
    const std::size_t begin = lower.find("select"), end = FindFrom(lower);
    std::vector<std::string> names;
    if (begin == std::string::npos || end == std::string::npos) return names;
    std::string name;
    for (std::size_t i = begin + std::string("select").size(); i < end; ++i) {
        if (wql[i] == '*') return {};
        if (wql[i] == ',') names.push_back(std::exchange(name, {}));
        if (wql[i] != ',' && !IsBlank(wql[i])) name += wql[i];
    }
    names.push_back(name);
    return names;
}

/// A query without objects has no columns of its own, and is no query without an answer.
void ShowNoObjects(const std::string& wql, DataTable& table) {
    table.AddRow(VariantList(Variant("", 0)));
    table.Clear(true);
    const auto names = SelectedProperties(wql);
    if (!names.empty()) table.SetDefaultColumnNames(names);
}

void Query(DescribedBinder& binder, InvocationResult& result) {
    WmiCall call;
    std::string wql;
    bool qualifiers = false;
    AddBindings(binder, call);
    binder.Add("wql", wql);
    binder.Add("qualifiers", qualifiers);
    if (!binder.Bind(result)) return;
    const bool isDone = RunWmi(call, result, [&](WmiConnector& connector) {
        return qualifiers ? connector.ExecuteQueryReturnQualifiers(wql, &result.resultTable)
                          : connector.ExecuteQuery(wql, &result.resultTable);
    });
    if (isDone && result.resultTable.IsUndefined()) ShowNoObjects(wql, result.resultTable);
}

void Update(DescribedBinder& binder, InvocationResult& result) {
    WmiCall call;
    std::string wql, set;
    bool all = false;
    AddBindings(binder, call);
    binder.Add("wql", wql);
    binder.Add("set", set);
    binder.Add("all", all);
    VariantList values;
    if (!binder.Bind(result) || !ReadAssignments("set", set, values, result)) return;
    const DataTable updates(values);
    const std::wstring wide = StringUtils::NarrowStringToWide(wql);
    RunWmi(call, result, [&](WmiConnector& connector) {
        return all ? connector.ExecuteUpdateAll(wide, &updates, &result.resultTable)
                   : connector.ExecuteUpdateFirst(wide, &updates, &result.resultTable);
    });
}

void Invoke(DescribedBinder& binder, InvocationResult& result) {
    WmiCall call;
    std::string className, wql, method, arguments;
    bool all = false;
    AddBindings(binder, call);
    binder.Add("class", className);
    binder.Add("wql", wql);
    binder.Add("method", method);
    binder.Add("arguments", arguments);
    binder.Add("all", all);
    MethodParameters values;
    if (!binder.Bind(result) || !ReadAssignments("arguments", arguments, values.scalars, result)) return;
    if (className.empty() == wql.empty()) {
        RefuseParameter("Either 'class' or 'wql' must be given", result);
        return;
    }
    const auto wide = [](const std::string& text) { return StringUtils::NarrowStringToWide(text); };
    RunWmi(call, result, [&](WmiConnector& connector) {
        connector.RefuseUnknownParameters(true);
        return wql.empty()
                   ? connector.ExecuteStaticMethod(wide(className), wide(method), values, &result.resultTable)
                   : connector.ExecuteInstanceMethod(wide(wql), wide(method), all, values,
                                                     &result.resultTable);
    });
}

void AddAll(IMethodMetadataBuilder& builder) {
    AddFlag(builder, "all", "Every object of the query instead of the first.");
}

void DescribeQuery(IMethodMetadataBuilder& builder) {
    builder.Description("Runs a WQL query and answers with its objects, a row each.")
        .Note(
            "An object that cannot be read is left out, and the call fails: the others are in the answer. "
            "On Linux the namespace ROOT\\CIMV2 has some classes with the machine's live facts.")
        .Example("quillon-agent run Wmi.Query wql=\"SELECT Name, ProcessId FROM Win32_Process\"")
        .HasAdditionalColumns("The properties of the objects.");
    AddParameter(builder, "wql", "The query.");
    AddFlag(builder, "qualifiers", "With the system properties, such as __PATH.");
    DescribeWmi(builder);
}

void DescribeUpdate(IMethodMetadataBuilder& builder) {
    builder.Flags({IMethodMetadata::MayModifySystemState})
        .Description("Changes properties of objects and answers with the objects, a row each.")
        .Note("Before a failure, objects may have been changed: their rows are in the answer.")
        .Example(
            "quillon-agent run Wmi.Update wql=\"SELECT * FROM Win32_LogicalDisk WHERE DeviceID = 'C:'\" "
            "set=\"VolumeName=System\"")
        .HasAdditionalColumns("The properties of the objects.");
    AddParameter(builder, "wql", "The query for the objects.");
    AddParameter(
        builder, "set",
        "NAME[:TYPE]=VALUE, parted by ';' (a ';' of a value is written twice); TYPE is that of the "
        "property: text (the default, also for date-times, for arrays with one element in each line, and for "
        "unsigned 64-bit numbers past the signed range), "
        "integer, float or boolean; 'NAME:null=' clears it.");
    AddAll(builder);
    DescribeWmi(builder);
}

void DescribeInvoke(IMethodMetadataBuilder& builder) {
    builder.Flags({IMethodMetadata::MayModifySystemState})
        .Description("Calls a method of a class or of objects and answers with its results, a row a call.")
        .Note(
            "An argument that the method does not have fails the call before it is made; one whose value it "
            "does not take is left out.")
        .Example(
            "quillon-agent run Wmi.Invoke wql=\"SELECT * FROM Win32_Process WHERE ProcessId = 1\" "
            "method=GetOwner")
        .HasAdditionalColumns("What the method gives, and for an object its ObjectPath.");
    AddParameter(builder, "method", "Name of the method.");
    AddOptionalParameter(builder, "class", "The class of a static method.");
    AddOptionalParameter(builder, "wql", "The query for the objects whose method it is.");
    AddOptionalParameter(builder, "arguments",
                         "NAME=VALUE, parted by ';' (a ';' of a value is written twice); an array has one "
                         "element in each line.");
    AddAll(builder);
    DescribeWmi(builder);
}

}  // namespace

std::unique_ptr<IModule> MakeWmiModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Wmi.Query", IMethodMetadata::V5_0, &DescribeQuery, &Query));
    methods.push_back(MakeMethod("Wmi.Update", IMethodMetadata::V5_0, &DescribeUpdate, &Update));
    methods.push_back(MakeMethod("Wmi.Invoke", IMethodMetadata::V5_0, &DescribeInvoke, &Invoke));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
