// Ownership of GObjects and of what is connected to them.
#pragma once

#include <glib-object.h>

#include <memory>
#include <string>
#include <utility>

namespace orvan {

struct UnrefGObject {
    void operator()(gpointer object) const { g_object_unref(object); }
};

// Holds one reference.
template <class T>
using GObjectRef = std::unique_ptr<T, UnrefGObject>;

// A new reference to the object.
template <class T>
GObjectRef<T> retain(T* object) {
    return GObjectRef<T>(static_cast<T*>(g_object_ref(object)));
}

struct FreeGLib {
    void operator()(gpointer memory) const { g_free(memory); }
};
using GLibString = std::unique_ptr<char, FreeGLib>;

// One handler of one object's signal, disconnected when this ends. The object may go first.
class SignalConnection {
public:
    SignalConnection(gpointer object, const char* signal, GCallback handler, gpointer data,
        GConnectFlags flags = static_cast<GConnectFlags>(0))
        : object_(static_cast<GObject*>(object)),
          id_(g_signal_connect_data(object, signal, handler, data, nullptr, flags)) {
        g_object_add_weak_pointer(object_, &weak_);
        weak_ = object_;
    }
    ~SignalConnection() {
        if (weak_ == nullptr) return;
        g_object_remove_weak_pointer(object_, &weak_);
        if (g_signal_handler_is_connected(object_, id_)) g_signal_handler_disconnect(object_, id_);
    }
    SignalConnection(const SignalConnection&) = delete;
    SignalConnection& operator=(const SignalConnection&) = delete;

    // While a Block lives, the handler is not called.
    class Block {
    public:
        explicit Block(const SignalConnection& connection) : connection_(connection) {
            g_signal_handler_block(connection_.object_, connection_.id_);
        }
        ~Block() { g_signal_handler_unblock(connection_.object_, connection_.id_); }
        Block(const Block&) = delete;
        Block& operator=(const Block&) = delete;

    private:
        const SignalConnection& connection_;
    };

private:
    GObject* object_;
    gpointer weak_ = nullptr;
    gulong id_;
};

} // namespace orvan
