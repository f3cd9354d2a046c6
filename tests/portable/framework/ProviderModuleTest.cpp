#include "TraceSupport.h"

#include "qel/CZORBALT_SysService.h"
#include "qel/QelException.h"
#include "qel/portable/CVersionLog.h"
#include "qel/portable/CWbemRepository.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <dlfcn.h>

namespace {

using qel::test::Owned;
using qel::test::RememberingListener;
using qel::test::Result;

// Keeps the first object beyond the call, as a sink may.
class KeepingSink final : public IWbemObjectSink {
  public:
    DWORD AddRef() noexcept override { return ++m_References; }
    DWORD Release() noexcept override { return --m_References; }
    HRESULT Indicate(long count, IWbemClassObject** objects) override {
        indicated += count;
        objects[0]->AddRef();
        kept.reset(objects[0]);
        return WBEM_S_NO_ERROR;
    }
    HRESULT SetStatus(long, HRESULT status, BSTR, IWbemClassObject*) override {
        statuses.push_back(status);
        return WBEM_S_NO_ERROR;
    }

    long indicated = 0;
    Owned<IWbemClassObject> kept;
    std::vector<HRESULT> statuses;

  private:
    DWORD m_References = 1;
};

class ProviderModuleTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_NE(m_Module, nullptr) << dlerror();
        auto* const create = reinterpret_cast<CZORBALT_ServerService* (*)()>(dlsym(m_Module.get(), "create"));
        ASSERT_NE(create, nullptr) << dlerror();
        m_Provider.reset(create());
        m_Repository->DeclareClass(
            {"SAMPLE_Echo", {}, {{"Echo", {{"Text", WbemType::String}}, {{"Text", WbemType::String}}}}});
        m_Provider->SetObjectManager(m_Repository.get());
    }

    [[nodiscard]] Owned<IWbemClassObject> Input() const {
        IWbemClassObject* definition = nullptr;
        IWbemClassObject* signature = nullptr;
        IWbemClassObject* instance = nullptr;
        EXPECT_EQ(m_Repository->GetObject("SAMPLE_Echo", 0, nullptr, &definition, nullptr), 0);
        const Owned<IWbemClassObject> ownedDefinition(definition);
        EXPECT_EQ(definition->GetMethod("Echo", 0, &signature, nullptr), 0);
        const Owned<IWbemClassObject> ownedSignature(signature);
        EXPECT_EQ(signature->SpawnInstance(0, &instance), 0);
        return Owned<IWbemClassObject>(instance);
    }
    DWORD Call(const std::string& method, IWbemClassObject* input) {
        std::string className = "SAMPLE_Echo";
        std::string methodName = method;
        return m_Provider->ExecMethodAsync(className.data(), methodName.data(), 0, nullptr, input, &m_Sink);
    }

    // In the end the provider goes, then its module.
    std::unique_ptr<void, decltype([](void* handle) { dlclose(handle); })> m_Module{
        dlopen(FRAMEWORK_TEST_MODULE, RTLD_NOW)};
    Owned<CWbemRepository> m_Repository{CWbemRepository::Create()};
    std::unique_ptr<CZORBALT_ServerService> m_Provider;
    KeepingSink m_Sink;
};

TEST_F(ProviderModuleTest, AMethodReportsOneObjectAndItsStatus) {
    const auto input = Input();
    ASSERT_EQ(input->Put("Text", std::string("hello")), 0);
    EXPECT_EQ(Call("Echo", input.get()), 0U);
    EXPECT_EQ(m_Sink.statuses, std::vector<HRESULT>{0});
    EXPECT_EQ(m_Sink.indicated, 1);
    ASSERT_NE(m_Sink.kept, nullptr);
    WbemValue value;
    EXPECT_EQ(m_Sink.kept->Get("Text", &value), 0);
    EXPECT_EQ(value, WbemValue(std::string("hello")));
    EXPECT_EQ(m_Sink.kept->Get("ReturnValue", &value), 0);
    EXPECT_EQ(value, WbemValue(std::uint32_t{0}));
}

TEST_F(ProviderModuleTest, AMissingInputTravelsInTheReturnValue) {
    EXPECT_EQ(Call("Echo", Input().get()), 0U);
    ASSERT_NE(m_Sink.kept, nullptr);
    WbemValue value;
    EXPECT_EQ(m_Sink.kept->Get("ReturnValue", &value), 0);
    EXPECT_EQ(value, WbemValue(std::uint32_t{0x80000001}));
}

TEST_F(ProviderModuleTest, AnObjectKeptByTheSinkHasItsOwnReferenceOnly) {
    Call("Echo", Input().get());
    ASSERT_NE(m_Sink.kept, nullptr);
    EXPECT_EQ(m_Sink.kept.release()->Release(), 0U);
}

TEST_F(ProviderModuleTest, TheBaseKnowsNoMethodAndReportsNothing) {
    EXPECT_EQ(Call("Unknown", nullptr), static_cast<DWORD>(WBEM_E_INVALID_METHOD));
    EXPECT_EQ(m_Sink.statuses, std::vector<HRESULT>{Result(WBEM_E_INVALID_METHOD)}) << "from the provider";
    EXPECT_EQ(m_Sink.indicated, 0);

    m_Sink.statuses.clear();
    CZORBALT_SysService base("test", "maker", "1.0");
    EXPECT_EQ(base.ExecMethodAsync(nullptr, nullptr, 0, nullptr, nullptr, &m_Sink),
              static_cast<DWORD>(WBEM_E_INVALID_METHOD));
    EXPECT_TRUE(m_Sink.statuses.empty());
    EXPECT_EQ(m_Sink.indicated, 0);
}

TEST_F(ProviderModuleTest, ItsObjectManagerIsTheProcessesUntilAnotherIsPutThere) {
    m_Provider.reset(reinterpret_cast<CZORBALT_ServerService* (*)()>(dlsym(m_Module.get(), "create"))());
    EXPECT_EQ(Call("Echo", nullptr), static_cast<DWORD>(WBEM_E_NOT_SUPPORTED)) << "the class is not there";
    CWbemRepository::Process().DeclareClass(
        {"SAMPLE_Echo", {}, {{"Echo", {{"Text", WbemType::String}}, {{"Text", WbemType::String}}}}});
    EXPECT_EQ(Call("Echo", nullptr), 0U);
    m_Provider->SetObjectManager(nullptr);
    EXPECT_EQ(Call("Echo", nullptr), static_cast<DWORD>(WBEM_E_NOT_SUPPORTED));
    CWbemRepository::Process().RemoveClass("SAMPLE_Echo");
}

TEST_F(ProviderModuleTest, AnObjectManagerIsNotOwned) {
    m_Provider.reset();
    EXPECT_EQ(m_Repository->AddRef(), 2U);
    EXPECT_EQ(m_Repository->Release(), 1U);
}

TEST_F(ProviderModuleTest, AnExceptionIsCaughtOutsideTheModuleAsWhatItIs) {
    EXPECT_THROW(Call("Fail", nullptr), QelException);
    try {
        Call("Fail", nullptr);
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "asked to fail");
    }
}

TEST_F(ProviderModuleTest, IsDeletedThroughItsBase) {
    RememberingListener listener;
    m_Provider.reset();
    const std::vector<RememberingListener::Heard> expected = {{"sample", 4, "SampleProvider is gone"}};
    EXPECT_EQ(listener.Lines(), expected);
}

TEST_F(ProviderModuleTest, AnnouncesItself) {
    std::vector<std::string> files;
    for (const CVersionLog::Entry& entry : CVersionLog::Entries()) {
        files.push_back(entry.fileName);
    }
    EXPECT_EQ(std::count(files.begin(), files.end(), "libSampleProvider.so"), 1);
}

}  // namespace
