#pragma once

#include <exception>

#include <glib-object.h>

namespace velmora {

// One signal handler on a GObject, disconnected when the holder goes, so
// that no callback can run after the C++ object it was given is gone. The
// instance is watched weakly: a widget that the renderer destroys first
// simply leaves nothing to disconnect. The holder's address is registered
// with GObject, so it can be neither copied nor moved; keep it in place or
// behind a pointer.
// On the thread that emits the instance's signals: GTK's for widgets.
class GLibSignal {
public:
    enum class When : bool {
        beforeDefault,
        afterDefault,
    };

    // `callback` must be cast with G_CALLBACK from a function of the
    // signal's own signature.
    GLibSignal(
        gpointer instance, const char* signal, GCallback callback, gpointer data, When when = When::beforeDefault)
        : m_instance(G_OBJECT(instance))
        , m_handler(g_signal_connect_data(instance, signal, callback, data, nullptr,
              when == When::afterDefault ? G_CONNECT_AFTER : static_cast<GConnectFlags>(0)))
    {
        g_object_add_weak_pointer(m_instance, reinterpret_cast<gpointer*>(&m_instance));
    }

    GLibSignal(const GLibSignal&) = delete;
    GLibSignal& operator=(const GLibSignal&) = delete;
    GLibSignal(GLibSignal&&) = delete;
    GLibSignal& operator=(GLibSignal&&) = delete;

    ~GLibSignal()
    {
        if (m_instance == nullptr)
            return;
        g_signal_handler_disconnect(m_instance, m_handler);
        g_object_remove_weak_pointer(m_instance, reinterpret_cast<gpointer*>(&m_instance));
    }

    // For a handler's catch (...): GTK's dispatch above it can take no C++
    // exception, so the failure is logged and the event goes on as if the
    // handler had not been there.
    static void reportFailure(const char* where) noexcept
    {
        try {
            throw;
        } catch (const std::exception& error) {
            g_critical("velmora: %s: %s", where, error.what());
        } catch (...) {
            g_critical("velmora: %s failed", where);
        }
    }

private:
    GObject* m_instance;
    gulong m_handler;
};

} // namespace velmora
