#include <tbCommon/SingletonClass.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <type_traits>

namespace
{

/// What the instances of these tests do and have done, reset for each test.
struct Journal
{
    int births = 0;
    int deaths = 0;
    std::function<void()> whileDying;
};

Journal journal;

class Service : public tbCommon::SingletonClass<Service>
{
public:
    Service(const Service& other)
        : tbCommon::SingletonClass<Service>(other)
    {
        ++journal.births;
    }

    Service& operator=(const Service&) = default;

    // Public, unlike the family's own: these tests also destroy objects by other means.
    ~Service() override
    {
        ++journal.deaths;
        if (journal.whileDying)
            journal.whileDying();
    }

private:
    friend class tbCommon::SingletonClass<Service>;

    Service() { ++journal.births; }
};

class OtherService : public tbCommon::SingletonClass<OtherService>
{
private:
    friend class tbCommon::SingletonClass<OtherService>;

    OtherService() = default;
    ~OtherService() override = default;
};

class SingletonClassTest : public ::testing::Test
{
protected:
    void SetUp() override { journal = Journal(); }

    void TearDown() override
    {
        journal.whileDying = nullptr;
        if (Service* left = Service::getInstanceIfExisting())
            left->kill();
        EXPECT_EQ(journal.births, journal.deaths);
    }
};

TEST_F(SingletonClassTest, AskingForExistingInstanceCreatesNone)
{
    EXPECT_EQ(Service::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(journal.births, 0);
}

TEST_F(SingletonClassTest, FirstUseCreatesTheOneInstance)
{
    Service* first = &Service::getInstanceRef();

    EXPECT_EQ(Service::getInstance(), first);
    EXPECT_EQ(&Service::getInstanceRef(), first);
    EXPECT_EQ(Service::getInstanceIfExisting(), first);
    EXPECT_EQ(journal.births, 1);
}

TEST_F(SingletonClassTest, KillDestroysTheInstanceAndTheNextIsNew)
{
    Service::getInstance()->kill();
    EXPECT_EQ(journal.deaths, 1);
    EXPECT_EQ(Service::getInstanceIfExisting(), nullptr);

    EXPECT_NE(Service::getInstance(), nullptr);

    EXPECT_EQ(journal.births, 2);
}

TEST_F(SingletonClassTest, KillIgnoresTheObjectItIsCalledOnAndDoesNothingWithoutInstance)
{
    Service copy(*Service::getInstance());

    copy.kill();
    copy.kill();

    EXPECT_EQ(Service::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(journal.deaths, 1);
}

TEST_F(SingletonClassTest, InstanceIsUnregisteredBeforeItsDestructorRuns)
{
    Service::getInstance();
    const Service* seen = Service::getInstance();
    journal.whileDying = [&seen] { seen = Service::getInstanceIfExisting(); };

    Service::getInstance()->kill();

    EXPECT_EQ(seen, nullptr);
}

TEST_F(SingletonClassTest, KillDestroysInstanceThatWasAskedForMeanwhile)
{
    journal.whileDying = []
    {
        journal.whileDying = nullptr;
        Service::getInstance();
    };

    Service::getInstance()->kill();

    EXPECT_EQ(Service::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(journal.births, 2);
    EXPECT_EQ(journal.deaths, 2);
}

TEST_F(SingletonClassTest, DestructorThatAlwaysAsksForInstanceEndsKillAfterSixteenRounds)
{
    journal.whileDying = [] { Service::getInstance(); };

    Service::getInstance()->kill();

    EXPECT_EQ(journal.deaths, 16);
    EXPECT_NE(Service::getInstanceIfExisting(), nullptr);
}

TEST_F(SingletonClassTest, KillDuringKillLeavesTheWorkToTheOuterOne)
{
    journal.whileDying = []
    {
        journal.whileDying = nullptr;
        Service::getInstance()->kill();
    };

    Service::getInstance()->kill();

    EXPECT_EQ(Service::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(journal.deaths, 2);
}

TEST_F(SingletonClassTest, MeanwhileInstanceThatIsDeletedInTheSameKillIsForgotten)
{
    journal.whileDying = []
    {
        journal.whileDying = nullptr;
        delete Service::getInstance();
    };

    Service::getInstance()->kill();

    EXPECT_EQ(Service::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(journal.deaths, 2);
}

TEST_F(SingletonClassTest, DeletingTheInstanceOrACopyForgetsTheInstance)
{
    delete Service::getInstance();
    EXPECT_EQ(Service::getInstanceIfExisting(), nullptr);
    std::unique_ptr<Service> instance(Service::getInstance()); // nobody else destroys it then

    {
        Service copy(*instance);
    }

    EXPECT_EQ(Service::getInstanceIfExisting(), nullptr);
}

TEST_F(SingletonClassTest, CopyAndAssignmentLeaveTheRegisteredInstance)
{
    Service* instance = Service::getInstance();
    auto copy = std::make_unique<Service>(*instance);

    *copy = *instance;

    EXPECT_EQ(Service::getInstance(), instance);
    EXPECT_NE(copy.get(), instance);
    instance->kill();
}

TEST_F(SingletonClassTest, EachClassHasAnInstanceOfItsOwn)
{
    Service* service = Service::getInstance();

    OtherService::getInstance()->kill();

    EXPECT_EQ(Service::getInstanceIfExisting(), service);
    EXPECT_EQ(OtherService::getInstanceIfExisting(), nullptr);
}

TEST_F(SingletonClassTest, TheDestructorIsTheOnlyVirtualOperation)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<tbCommon::SingletonClass<Service>>);
    EXPECT_EQ(sizeof(Service), sizeof(void*));
}

} // namespace
