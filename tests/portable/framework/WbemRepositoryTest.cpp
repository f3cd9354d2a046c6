#include "Support.h"

#include "qel/portable/CWbemRepository.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

using qel::test::Owned;
using qel::test::Result;

using Names = std::vector<std::string>;
using OwnedRepository = Owned<CWbemRepository>;

Owned<IWbemClassObject> Get(CWbemRepository& repository, const std::string& name) {
    IWbemClassObject* object = nullptr;
    EXPECT_EQ(repository.GetObject(name, 0, nullptr, &object, nullptr), 0) << name;
    return Owned<IWbemClassObject>(object);
}

Names NamesOf(IWbemClassObject& object) {
    Names names;
    EXPECT_EQ(object.GetNames(&names), 0);
    return names;
}

Names InputNamesOf(IWbemClassObject& definition, const char* method) {
    IWbemClassObject* signature = nullptr;
    EXPECT_EQ(definition.GetMethod(method, 0, &signature, nullptr), 0) << method;
    return NamesOf(*Owned<IWbemClassObject>(signature));
}

Names OutputNamesOf(IWbemClassObject& definition, const char* method) {
    IWbemClassObject* signature = nullptr;
    EXPECT_EQ(definition.GetMethod(method, 0, nullptr, &signature), 0) << method;
    return NamesOf(*Owned<IWbemClassObject>(signature));
}

TEST(WbemRepositoryTest, ANewRepositoryHasNoClasses) {
    const OwnedRepository repository(CWbemRepository::Create());
    IWbemClassObject* object = nullptr;
    EXPECT_EQ(repository->GetObject("ZORBALT_MngSrvRaid", 0, nullptr, &object, nullptr),
              Result(WBEM_E_NOT_FOUND));
    EXPECT_EQ(object, nullptr);
}

TEST(WbemRepositoryTest, AnUnknownClassLeavesThePlaceAlone) {
    const OwnedRepository repository(CWbemRepository::Create());
    repository->DeclareClass({"SAMPLE_Drive", {}, {}});
    const Owned<IWbemClassObject> mark = Get(*repository, "SAMPLE_Drive");
    for (const char* const name : {"SAMPLE_Unknown", "sample_drive", "SAMPLE_Drive ", ""}) {
        IWbemClassObject* object = mark.get();
        EXPECT_EQ(repository->GetObject(name, 0, nullptr, &object, nullptr), Result(WBEM_E_NOT_FOUND))
            << name;
        EXPECT_EQ(object, mark.get()) << name;
    }
    EXPECT_EQ(repository->GetObject("SAMPLE_Drive", 0, nullptr, nullptr, nullptr),
              Result(WBEM_E_INVALID_PARAMETER));
}

TEST(WbemRepositoryTest, ADeclarationTakesThePlaceOfTheOneWithTheSameName) {
    const OwnedRepository repository(CWbemRepository::Create());
    repository->DeclareClass({"SAMPLE_Drive", {{"Old", WbemType::String}}, {}});
    repository->DeclareClass({"SAMPLE_Other", {{"Other", WbemType::String}}, {}});
    repository->DeclareClass({"SAMPLE_Drive", {{"New", WbemType::Uint32}}, {}});
    EXPECT_EQ(NamesOf(*Get(*repository, "SAMPLE_Drive")), Names{"New"});
    EXPECT_EQ(NamesOf(*Get(*repository, "SAMPLE_Other")), Names{"Other"});
}

TEST(WbemRepositoryTest, AClassThatWasGivenOutKeepsItsDeclaration) {
    const OwnedRepository repository(CWbemRepository::Create());
    repository->DeclareClass(
        {"SAMPLE_Drive", {{"Old", WbemType::String}}, {{"Locate", {{"Seconds", WbemType::Uint32}}, {}}}});
    const auto before = Get(*repository, "SAMPLE_Drive");
    repository->DeclareClass({"SAMPLE_Drive", {{"New", WbemType::String}}, {}});
    const auto between = Get(*repository, "SAMPLE_Drive");
    repository->RemoveClass("SAMPLE_Drive");
    IWbemClassObject* after = nullptr;
    EXPECT_EQ(repository->GetObject("SAMPLE_Drive", 0, nullptr, &after, nullptr), Result(WBEM_E_NOT_FOUND));

    EXPECT_EQ(NamesOf(*before), Names{"Old"});
    EXPECT_EQ(InputNamesOf(*before, "Locate"), Names{"Seconds"});
    EXPECT_EQ(NamesOf(*between), Names{"New"});
    EXPECT_EQ(between->GetMethod("Locate", 0, nullptr, nullptr), Result(WBEM_E_INVALID_METHOD));
}

TEST(WbemRepositoryTest, RemovingAnUnknownClassChangesNothing) {
    const OwnedRepository repository(CWbemRepository::Create());
    repository->DeclareClass({"SAMPLE_Drive", {}, {}});
    repository->RemoveClass("SAMPLE_Unknown");
    EXPECT_NE(Get(*repository, "SAMPLE_Drive"), nullptr);
}

TEST(WbemRepositoryTest, HasOneReferenceWhenItIsMade) {
    CWbemRepository* const repository = CWbemRepository::Create();
    EXPECT_EQ(repository->AddRef(), 2U);
    EXPECT_EQ(repository->Release(), 1U);
    EXPECT_EQ(repository->Release(), 0U);
}

TEST(WbemRepositoryTest, ClassesMayComeAndGoWhileThreadsUseThem) {
    constexpr int kThreads = 4;
    constexpr int kFindingsEach = 500;
    const OwnedRepository repository(CWbemRepository::Create());
    std::atomic<int> strange{0};
    std::atomic<int> running{kThreads};
    std::vector<std::thread> threads;
    for (int each = 0; each < kThreads; ++each) {
        threads.emplace_back([&repository, &strange, &running] {
            for (int found = 0; found < kFindingsEach;) {
                IWbemClassObject* object = nullptr;
                if (repository->GetObject("SAMPLE_Drive", 0, nullptr, &object, nullptr) == 0) {
                    const Owned<IWbemClassObject> definition(object);
                    ++found;
                    strange += NamesOf(*definition) == Names{"Present"} ? 0 : 1;
                }
            }
            --running;
        });
    }
    while (running > 0) {
        repository->DeclareClass({"SAMPLE_Drive", {{"Present", WbemType::Boolean}}, {}});
        std::this_thread::yield();
        repository->RemoveClass("SAMPLE_Drive");
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(strange, 0);
}

TEST(ProcessRepositoryTest, IsOneForTheProcess) {
    EXPECT_EQ(&CWbemRepository::Process(), &CWbemRepository::Process());
    CWbemRepository::Process().DeclareClass({"SAMPLE_Drive", {}, {}});
    EXPECT_NE(Get(CWbemRepository::Process(), "SAMPLE_Drive"), nullptr);
    CWbemRepository::Process().RemoveClass("SAMPLE_Drive");
}

TEST(ProcessRepositoryTest, HasTheRaidClassWithItsTwoMethods) {
    const auto definition = Get(CWbemRepository::Process(), "ZORBALT_MngSrvRaid");
    ASSERT_NE(definition, nullptr);
    EXPECT_EQ(NamesOf(*definition), Names());
    EXPECT_EQ(InputNamesOf(*definition, "GetInfo"), Names());
    EXPECT_EQ(OutputNamesOf(*definition, "GetInfo"), (Names{"XmlData", "ReturnValue"}));
    EXPECT_EQ(InputNamesOf(*definition, "GetPDInfo"), (Names{"CtrlNo", "EnclNo", "PDNo"}));
    EXPECT_EQ(OutputNamesOf(*definition, "GetPDInfo"), (Names{"XmlData", "ReturnValue"}));
    for (const char* const other : {"getinfo", "GetLDInfo", "SetInfo", ""}) {
        EXPECT_EQ(definition->GetMethod(other, 0, nullptr, nullptr), Result(WBEM_E_INVALID_METHOD)) << other;
    }
}

TEST(ProcessRepositoryTest, TheRaidMethodsTakeAndGiveText) {
    const auto definition = Get(CWbemRepository::Process(), "ZORBALT_MngSrvRaid");
    ASSERT_NE(definition, nullptr);
    for (const char* const method : {"GetInfo", "GetPDInfo"}) {
        IWbemClassObject* in = nullptr;
        IWbemClassObject* out = nullptr;
        ASSERT_EQ(definition->GetMethod(method, 0, &in, &out), 0);
        const Owned<IWbemClassObject> ownedIn(in);
        const Owned<IWbemClassObject> ownedOut(out);
        for (const std::string& name : NamesOf(*in)) {
            EXPECT_EQ(in->Put(name.c_str(), std::string("1")), 0) << name;
            EXPECT_EQ(in->Put(name.c_str(), std::uint32_t{1}), Result(WBEM_E_TYPE_MISMATCH)) << name;
        }
        EXPECT_EQ(out->Put("XmlData", std::string("<RAID/>")), 0);
        EXPECT_EQ(out->Put("XmlData", std::uint32_t{1}), Result(WBEM_E_TYPE_MISMATCH));
        EXPECT_EQ(out->Put("ReturnValue", std::uint32_t{0xA1}), 0);
    }
}

}  // namespace
