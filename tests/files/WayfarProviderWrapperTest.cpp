#include "quillon/WayfarProviderWrapper.h"

#include <gmock/gmock.h>

#include <sstream>
#include <stdexcept>

#include "quillon/IProviderRegistry.h"
#include "support/RecordingLogger.h"

namespace quillon::test {
namespace {

using Fill = std::function<void(InvocationResult&)>;

/// A registry of one provider, which keeps its last call as text.
class Registry final : public IProviderRegistry, public IProvider {
public:
    Registry() { ServiceLocator::Put<IProviderRegistry>(this); }
    ~Registry() override { ServiceLocator::Remove<IProviderRegistry>(); }
    IProvider* GetProvider(const std::string& name) override {
        return hasProvider && name == "Wayfar" ? this : nullptr;
    }
    void InvokeMethod(const std::string& method, VariantList& parameters, InvocationResult& result,
                      void* reserved) override {
        std::ostringstream text;
        text << method << parameters << (reserved == nullptr);
        if (!parameters.Contains("FileSize")) text << ' ' << result.errorMessage;
        call = text.str();
        isInteger = parameters.Contains("FileSize") && parameters["FileSize"].TypeIs(typeid(long long));
        fill(result);
    }

    bool hasProvider = true, isInteger = false;
    Fill fill = [](InvocationResult&) {};
    std::string call;
};

class WayfarProviderWrapperTest : public testing::Test {
protected:
    RecordingLogger log;
    WayfarProviderWrapper wrapper;
};

TEST_F(WayfarProviderWrapperTest, AvailabilityIsTheFirstRowsBoolean) {
    Registry registry;
    const auto row = [](const Variant& value) {
        return [value](InvocationResult& result) { result.resultTable.AddRow(VariantList(value)); };
    };
    const struct {
        const char* what;
        Fill fill;
        bool available, failed;
        int code;
    } cases[] = {{"yes", row(Variant("WayfarOkay", true)), true, false, 0},
                 {"no", row(Variant("WayfarOkay", false)), false, false, 0},
                 {"a number", row(Variant("WayfarOkay", 2)), true, false, 0},
                 {"no row", [](InvocationResult& result) { result.resultCode = 9; }, false, true, 9},
                 {"no column", row(Variant("Other", true)), false, true, 5},
                 {"null", row(Variant("WayfarOkay", typeid(bool))), false, true, 5},
                 {"a text", row(Variant("WayfarOkay", "true")), false, true, 5}};
    for (const auto& c : cases) {
        registry.fill = c.fill;
        InvocationResult result;
        bool failed = !c.failed, failedAlone = !c.failed;
        EXPECT_EQ(wrapper.WayfarIsAvailable(failed, &result), c.available) << c.what;
        EXPECT_EQ(wrapper.WayfarIsAvailable(failedAlone, nullptr), c.available) << c.what;
        EXPECT_EQ(registry.call, "IsOkayForDownload{}1 ");
        EXPECT_TRUE(failed == c.failed && failedAlone == c.failed) << c.what;
        EXPECT_EQ(result.resultCode, c.code) << c.what;
        EXPECT_EQ(result.errorMessage, c.code == 5 ? "Unexpected result from Wayfar availability test" : "");
    }
}

TEST_F(WayfarProviderWrapperTest, DownloadsPassTheirParametersInOrder) {
    Registry registry;
    InvocationResult result;
    result.errorMessage = "kept";
    EXPECT_TRUE(wrapper.Download("lsz", "folder", "local", result));
    EXPECT_EQ(registry.call,
              "DownloadFolderContent{RemoteContentFolderUrl=folder, RemoteLszUrl=lsz, "
              "LocalFolderPath=local}1 kept");
    EXPECT_TRUE(wrapper.Download("url", "path", ContentExpectation{1LL << 40, "hash"}));
    EXPECT_TRUE(registry.isInteger);
    EXPECT_EQ(registry.call,
              "DownloadFileContent{RemoteContentFileUrl=url, FileHash=hash, FileSize=1099511627776, "
              "LocalFilePath=path}1");
    registry.fill = [](InvocationResult& r) { r.resultCode = 1; };
    EXPECT_FALSE(wrapper.Download("lsz", "folder", "local", result));
    EXPECT_FALSE(wrapper.Download("url", "path", ContentExpectation{}));
    registry.fill = [](InvocationResult&) { throw std::runtime_error("broken"); };
    EXPECT_THROW(wrapper.Download("url", "path", ContentExpectation{}), std::runtime_error);
}

TEST_F(WayfarProviderWrapperTest, WithoutRegistryOrProviderNothingIsAsked) {
    Registry registry;
    registry.hasProvider = false;
    for (const bool hasRegistry : {true, false}) {
        if (!hasRegistry) ServiceLocator::Remove<IProviderRegistry>();
        InvocationResult asked, downloaded;
        bool failed = false;
        EXPECT_FALSE(wrapper.WayfarIsAvailable(failed, &asked) || wrapper.WayfarIsAvailable(failed, nullptr));
        EXPECT_TRUE(failed);
        EXPECT_FALSE(wrapper.Download("lsz", "folder", "local", downloaded));
        EXPECT_FALSE(wrapper.Download("url", "path", ContentExpectation{}));
        for (const auto* result : {&asked, &downloaded}) {
            EXPECT_EQ(std::to_string(result->resultCode) + result->errorMessage,
                      "4Missing 'Wayfar' provider");
        }
    }
    EXPECT_FALSE(WayfarProviderWrapper::WayfarIsEnabled());
    ServiceLocator::Put<IProviderRegistry>(&registry);
}

}  // namespace
}  // namespace quillon::test
