#include "Linux/X11/Focus/BusStream.h"

#include <unistd.h>

#include <string_view>

namespace tavel {

namespace {

/// Ends the task with the number of bytes that were read or written, or with the error if it is negative.
void finish(GTask* task, gssize count, GError* error) {
    if (count < 0)
        g_task_return_error(task, error);
    else
        g_task_return_int(task, count);
    g_object_unref(task);
}

/// The outcome of such a task.
template <typename Stream>
gssize countOf(Stream*, GAsyncResult* result, GError** error) {
    return g_task_propagate_int(G_TASK(result), error);
}

// ---- an input that refuses to read a large message

/// GDBus reads this many bytes of a message, which tell its size, and then asks for all others at once.
constexpr gsize messageStart = 16;

void readAsync(GInputStream* stream, void* buffer, gsize count, int priority, GCancellable* cancellable,
               GAsyncReadyCallback callback, gpointer data) {
    GTask* const task = g_task_new(stream, cancellable, callback, data);
    if (count > largestBusMessage - messageStart) {
        g_task_return_new_error(task, G_IO_ERROR, G_IO_ERROR_MESSAGE_TOO_LARGE, "The message is too large");
        g_object_unref(task);
        return;
    }
    const auto finished = [](GObject* base, GAsyncResult* result, gpointer taken) {
        GError* error = nullptr;
        const gssize read = g_input_stream_read_finish(G_INPUT_STREAM(base), result, &error);
        finish(G_TASK(taken), read, error);
    };
    GInputStream* const base = g_filter_input_stream_get_base_stream(G_FILTER_INPUT_STREAM(stream));
    g_input_stream_read_async(base, buffer, count, priority, cancellable, finished, task);
}

void initInput(gpointer type, gpointer) {
    auto* const input = G_INPUT_STREAM_CLASS(type);
    input->read_async = readAsync;
    input->read_finish = countOf;
}

GType limitedInputType() {
    static const GType type = g_type_register_static_simple(
        G_TYPE_FILTER_INPUT_STREAM, "TavelLimitedInput", sizeof(GFilterInputStreamClass), initInput,
        sizeof(GFilterInputStream), nullptr, G_TYPE_FLAG_NONE);
    return type;
}

// ---- an output that only hides the socket's: GDBus takes a stream with a socket's output for a socket

void writeAsync(GOutputStream* stream, const void* buffer, gsize count, int priority,
                GCancellable* cancellable, GAsyncReadyCallback callback, gpointer data) {
    GTask* const task = g_task_new(stream, cancellable, callback, data);
    const auto finished = [](GObject* base, GAsyncResult* result, gpointer taken) {
        GError* error = nullptr;
        const gssize written = g_output_stream_write_finish(G_OUTPUT_STREAM(base), result, &error);
        finish(G_TASK(taken), written, error);
    };
    GOutputStream* const base = g_filter_output_stream_get_base_stream(G_FILTER_OUTPUT_STREAM(stream));
    g_output_stream_write_async(base, buffer, count, priority, cancellable, finished, task);
}

void initOutput(gpointer type, gpointer) {
    auto* const output = G_OUTPUT_STREAM_CLASS(type);
    output->write_async = writeAsync;
    output->write_finish = countOf;
}

GType plainOutputType() {
    static const GType type = g_type_register_static_simple(
        G_TYPE_FILTER_OUTPUT_STREAM, "TavelPlainOutput", sizeof(GFilterOutputStreamClass), initOutput,
        sizeof(GFilterOutputStream), nullptr, G_TYPE_FLAG_NONE);
    return type;
}

/// Holds the connection, whose last reference closes it.
GioPointer<GIOStream> limited(GioPointer<GIOStream> connection) {
    auto* const input = G_INPUT_STREAM(g_object_new(limitedInputType(), "base-stream",
                                                    g_io_stream_get_input_stream(connection.get()), nullptr));
    auto* const output = G_OUTPUT_STREAM(g_object_new(
        plainOutputType(), "base-stream", g_io_stream_get_output_stream(connection.get()), nullptr));
    GioPointer<GIOStream> stream(g_simple_io_stream_new(input, output));
    g_object_unref(input);
    g_object_unref(output);
    g_object_set_data_full(G_OBJECT(stream.get()), "connection", connection.release(), g_object_unref);
    return stream;
}

// ---- authentication

bool send(GIOStream* stream, std::string_view bytes, GCancellable* cancellable) {
    return g_output_stream_write_all(g_io_stream_get_output_stream(stream), bytes.data(), bytes.size(),
                                     nullptr, cancellable, nullptr) != FALSE;
}

/// Reads the server's line, which nothing follows before the client's next one. Empty if it does not come.
std::string readLine(GIOStream* stream, GCancellable* cancellable) {
    constexpr std::size_t longestLine = 1024;
    std::string line;
    char byte = 0;
    while (line.size() < longestLine && !line.ends_with("\r\n")) {
        if (g_input_stream_read(g_io_stream_get_input_stream(stream), &byte, 1, cancellable, nullptr) != 1)
            return {};
        line += byte;
    }
    return line;
}

/// The user's number in decimal, each digit as two hexadecimal ones.
std::string identity() {
    std::string hexadecimal;
    for (const char digit : std::to_string(getuid())) {
        hexadecimal += '3';
        hexadecimal += digit;
    }
    return hexadecimal;
}

bool authenticate(GIOStream* stream, GCancellable* cancellable) {
    using namespace std::string_literals;
    return send(stream, "\0AUTH EXTERNAL "s + identity() + "\r\n", cancellable) &&
           readLine(stream, cancellable).starts_with("OK ") && send(stream, "BEGIN\r\n", cancellable);
}

} // namespace

GioPointer<GIOStream> openBusStream(const std::string& address, GCancellable* cancellable) {
    GioPointer<GIOStream> connection(
        g_dbus_address_get_stream_sync(address.c_str(), nullptr, cancellable, nullptr));
    if (connection == nullptr || !authenticate(connection.get(), cancellable))
        return nullptr;
    return limited(std::move(connection));
}

} // namespace tavel
