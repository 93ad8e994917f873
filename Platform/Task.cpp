#include "Platform/Task.h"

#include "Platform/ChildProcess.h"
#include "Platform/Guarded.h"

#include <glib-unix.h>
#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace platform {
namespace {

constexpr guint kGraceMilliseconds = 500;
// How much is read at once, and how often in a row before the application's loop gets its turn.
constexpr std::size_t kReadSize = std::size_t{64} * 1024;
constexpr int kReadsInARow = 16;

struct EndSource {
    void operator()(GSource* source) const {
        g_source_destroy(source);
        g_source_unref(source);
    }
};
using Source = std::unique_ptr<GSource, EndSource>;

struct ContextUnref {
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
};

gboolean reapAbandoned(gint, GIOCondition, gpointer process) {
    reapChild(*static_cast<FileDescriptor*>(process));
    return G_SOURCE_REMOVE;
}

void forgetProcess(gpointer process) {
    delete static_cast<FileDescriptor*>(process);
}

// Has the default main context collect the process whenever it ends.
void reapLater(FileDescriptor process) {
    const int descriptor = process.get();
    GSource* const source = g_unix_fd_source_new(descriptor, G_IO_IN);
    g_source_set_callback(
        source, G_SOURCE_FUNC(reapAbandoned), new FileDescriptor(std::move(process)), forgetProcess);
    g_source_attach(source, nullptr);
    g_source_unref(source);
}

} // namespace

// What goes on until the end is told. Its sources refer to it, so they end with it.
class Task::Run : public std::enable_shared_from_this<Run> {
public:
    Run(ChildPipes pipes, FileDescriptor process, std::string input, EndHandler handler)
        : pipes_(std::move(pipes)),
          process_(std::move(process)),
          input_(std::move(input)),
          handler_(std::move(handler)),
          context_(g_main_context_ref_thread_default()) {}

    void start() {
        draining_ = watch<&Run::drain>(pipes_.errorReader, G_IO_IN);
        if (process_)
            ending_ = watch<&Run::processEnded>(process_, G_IO_IN);
        else
            processEnded();
        feed();
        if (pipes_.inputWriter) feeding_ = watch<&Run::feed>(pipes_.inputWriter, G_IO_OUT);
    }

    bool isRunning() const { return !isFinished_; }
    void terminate() { terminateChild(process_); }

    void abandon() {
        if (isFinished_) return;
        isFinished_ = true;
        handler_ = nullptr;
        releaseSources();
        pipes_ = {};
        terminate();
        if (process_) reapLater(std::move(process_));
    }

private:
    template <void (Run::*step)()>
    Source watch(const FileDescriptor& descriptor, GIOCondition condition) {
        GSource* const source = g_unix_fd_source_new(descriptor.get(), condition);
        const GUnixFDSourceFunc function = [](gint, GIOCondition, gpointer data) -> gboolean {
            const auto run = static_cast<Run*>(data)->shared_from_this();
            guarded("task", [&run] { ((*run).*step)(); });
            return G_SOURCE_CONTINUE;
        };
        g_source_set_callback(source, G_SOURCE_FUNC(function), this, nullptr);
        g_source_attach(source, context_.get());
        return Source(source);
    }

    // A child may never read its input: what does not fit the pipe waits, and goes with the process.
    void feed() {
        while (fed_ < input_.size()) {
            const ssize_t count =
                ::write(pipes_.inputWriter.get(), input_.data() + fed_, input_.size() - fed_);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0 && errno == EAGAIN) return;
            if (count < 0) break;
            fed_ += static_cast<std::size_t>(count);
        }
        closeInput();
    }

    void closeInput() {
        feeding_.reset();
        pipes_.inputWriter.reset();
    }

    void drain() {
        std::array<char, kReadSize> bytes;
        for (int reads = 0; reads < kReadsInARow; ++reads) {
            const ssize_t count = ::read(pipes_.errorReader.get(), bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR) continue;
            if (count < 0 && errno == EAGAIN) return;
            if (count <= 0) return outputEnded();
            keep(bytes.data(), static_cast<std::size_t>(count));
        }
    }

    void keep(const char* bytes, std::size_t count) {
        const std::size_t room = kMaximumTaskOutput - output_.standardError.size();
        output_.standardError.append(bytes, std::min(count, room));
        output_.isTruncated = output_.isTruncated || count > room;
    }

    void outputEnded() {
        draining_.reset();
        pipes_.errorReader.reset();
        if (hasProcessEnded_) finish();
    }

    void processEnded() {
        ending_.reset();
        reapChild(process_);
        process_.reset();
        hasProcessEnded_ = true;
        closeInput();
        if (!pipes_.errorReader) return finish();
        grace_ = Source(g_timeout_source_new(kGraceMilliseconds));
        g_source_set_callback(
            grace_.get(),
            [](gpointer data) -> gboolean {
                static_cast<Run*>(data)->shared_from_this()->finish();
                return G_SOURCE_CONTINUE;
            },
            this, nullptr);
        g_source_attach(grace_.get(), context_.get());
    }

    void finish() {
        isFinished_ = true;
        releaseSources();
        pipes_ = {};
        const EndHandler handler = std::exchange(handler_, nullptr);
        if (handler) guarded("end of a task", [&] { handler(output_); });
    }

    void releaseSources() {
        for (Source* source : {&feeding_, &draining_, &ending_, &grace_})
            source->reset();
    }

    ChildPipes pipes_;
    FileDescriptor process_;
    std::string input_;
    std::size_t fed_ = 0;
    TaskOutput output_;
    EndHandler handler_;
    bool hasProcessEnded_ = false;
    bool isFinished_ = false;
    std::unique_ptr<GMainContext, ContextUnref> context_;
    Source feeding_;
    Source draining_;
    Source ending_;
    Source grace_;
};

Task::Task(std::shared_ptr<Run> run) : run_(std::move(run)) {}

Task::~Task() {
    run_->abandon();
}

std::unique_ptr<Task> Task::launch(TaskDescription description, EndHandler handler, Failure& error) {
    ChildPipes pipes;
    FileDescriptor process;
    if (!spawnChild(description, &pipes, &process, error)) return nullptr;
    auto run = std::make_shared<Run>(
        std::move(pipes), std::move(process), std::move(description.input), std::move(handler));
    run->start();
    return std::unique_ptr<Task>(new Task(std::move(run)));
}

bool Task::isRunning() const {
    return run_->isRunning();
}

void Task::terminate() {
    run_->terminate();
}

} // namespace platform
