#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gio/gio.h>

namespace velmora {

// A python3-dbusmock server on a private bus, in a process of its own: a
// synchronous call to a mock served on the caller's own thread would
// deadlock. The test talks to it over a connection of its own.
class DBusMockServer {
public:
    enum class BusKind : bool {
        session,
        system,
    };

    // Starts `python3 -m dbusmock <arguments>` on the bus at `address`,
    // which it takes for the `kind` bus, and waits until it holds `name`.
    // Throws std::runtime_error when it does not come up.
    DBusMockServer(const std::string& address, BusKind kind, std::string name, std::string path, const std::vector<std::string>& arguments);
    DBusMockServer(const DBusMockServer&) = delete;
    DBusMockServer& operator=(const DBusMockServer&) = delete;
    DBusMockServer(DBusMockServer&&) = delete;
    DBusMockServer& operator=(DBusMockServer&&) = delete;
    ~DBusMockServer();

    // Calls `method` of the mock's object; the reply, which the caller
    // unrefs, or null (reported as a test failure) when it failed.
    GVariant* call(const char* interfaceName, const char* method, GVariant* parameters) const;
    void callAndForget(const char* interfaceName, const char* method, GVariant* parameters) const;
    // Sends a signal from the mock's object: `arguments` is its "av".
    void emit(const char* interfaceName, const char* signal, const char* signature, GVariant* arguments) const;
    // The arguments of every call of `method` so far, in order.
    [[nodiscard]] std::vector<std::vector<GVariant*>> methodCalls(const char* method) const;
    // When each call of `method` came, in whole seconds since the epoch,
    // rounded down.
    [[nodiscard]] std::vector<std::uint64_t> methodCallTimes(const char* method) const;

private:
    void stop();

    GDBusConnection* m_connection = nullptr;
    std::string m_name;
    std::string m_path;
    GPid m_process = 0;
};

// Frees what DBusMockServer::methodCalls() answered.
void freeCalls(std::vector<std::vector<GVariant*>>& calls);

// Polls `done`, iterating `context` (when not null) in between, until it
// answers true or `patience` has passed; its last answer.
bool waitUntil(const std::function<bool()>& done, GMainContext* context = nullptr, std::chrono::seconds patience = std::chrono::seconds(20));

} // namespace velmora
