#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include <gio/gio.h>
#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Desktop/SingleInstance.h"

namespace velmora {
namespace {

// A private session bus for the test, and connections to it that play
// separate processes.
class SingleInstanceTest : public testing::Test {
public:
    SingleInstanceTest(const SingleInstanceTest&) = delete;
    SingleInstanceTest& operator=(const SingleInstanceTest&) = delete;
    SingleInstanceTest(SingleInstanceTest&&) = delete;
    SingleInstanceTest& operator=(SingleInstanceTest&&) = delete;

protected:
    SingleInstanceTest() { g_test_dbus_up(m_bus); }
    ~SingleInstanceTest() override
    {
        g_test_dbus_down(m_bus);
        g_object_unref(m_bus);
    }

    [[nodiscard]] GDBusConnection* connect() const
    {
        const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        return g_dbus_connection_new_for_address_sync(g_test_dbus_get_bus_address(m_bus), flags, nullptr, nullptr, nullptr);
    }

    GTestDBus* m_bus = g_test_dbus_new(G_TEST_DBUS_NONE);
};

TEST_F(SingleInstanceTest, SecondStart_AsksTheFirstToReopenAndIsToldToEnd)
{
    std::atomic<int> reopened{0};
    std::promise<SingleInstance::Claim> firstClaim;
    GMainContext* context = g_main_context_new();
    GMainLoop* loop = g_main_loop_new(context, FALSE);
    // The first instance answers on its own main thread.
    std::thread first([&] {
        g_main_context_push_thread_default(context);
        GDBusConnection* connection = connect();
        SingleInstance::Claim claimed = SingleInstance::Claim::unknown;
        std::unique_ptr<SingleInstance> instance = SingleInstance::claim(
            connection, [&] { ++reopened; }, claimed);
        firstClaim.set_value(claimed);
        g_main_loop_run(loop);
        instance.reset();
        g_object_unref(connection);
        g_main_context_pop_thread_default(context);
    });
    ASSERT_EQ(firstClaim.get_future().get(), SingleInstance::Claim::first);

    GDBusConnection* second = connect();
    SingleInstance::Claim claimed = SingleInstance::Claim::first;
    const std::unique_ptr<SingleInstance> secondInstance = SingleInstance::claim(
        second, [] {}, claimed);
    EXPECT_EQ(claimed, SingleInstance::Claim::reopenedOther);
    EXPECT_FALSE(secondInstance);
    EXPECT_EQ(reopened.load(), 1) << "answered before the call returned";

    g_main_loop_quit(loop);
    first.join();
    g_main_loop_unref(loop);
    g_main_context_unref(context);

    // Once the first has ended, the next start is the first again.
    SingleInstance::Claim again = SingleInstance::Claim::unknown;
    const std::unique_ptr<SingleInstance> next = SingleInstance::claim(
        second, [] {}, again);
    EXPECT_EQ(again, SingleInstance::Claim::first);
    EXPECT_TRUE(next);
    g_object_unref(second);
}

TEST_F(SingleInstanceTest, NoBus_RunsAlone)
{
    SingleInstance::Claim claimed = SingleInstance::Claim::first;
    EXPECT_FALSE(SingleInstance::claim(
        nullptr, [] {}, claimed));
    EXPECT_EQ(claimed, SingleInstance::Claim::unknown);
}

} // namespace
} // namespace velmora
