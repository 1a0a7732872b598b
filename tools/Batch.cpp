#include "Batch.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <iostream>
#include <mutex>
#include <system_error>
#include <thread>

namespace {

// The job running on this thread, so that the library's log lines join its report.
thread_local JobReport* tCurrentReport = nullptr;
thread_local const std::string* tCurrentLabel = nullptr;

std::size_t terminalWidth() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col >= 20) {
        return size.ws_col;
    }
    return 80;
}

// Cuts `text` to at most `size` bytes without splitting a UTF-8 sequence.
void truncateUtf8(std::string& text, std::size_t size) {
    if (text.size() <= size) {
        return;
    }
    text.resize(size);
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80) {
        text.pop_back();
    }
    if (!text.empty() && static_cast<unsigned char>(text.back()) >= 0xC0) {
        text.pop_back();
    }
}

// The last bytes of `text`, at most `size`, starting on a character boundary.
std::string tailUtf8(const std::string& text, std::size_t size) {
    std::size_t start = text.size() > size ? text.size() - size : 0;
    while (start < text.size() && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) {
        ++start;
    }
    return text.substr(start);
}

// One line on standard error, redrawn in place; only ever used on a terminal.
class ProgressBar {
public:
    ProgressBar(std::size_t total, bool enabled)
        : mTotal(total), mEnabled(enabled), mWidth(enabled ? terminalWidth() : 0) {}

    void show(std::size_t finished, const std::string& label) {
        if (!mEnabled) {
            return;
        }
        constexpr std::size_t kBarWidth = 24;
        const std::size_t filled = kBarWidth * finished / mTotal;
        std::string line = "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') +
                           "] " + std::to_string(finished) + "/" + std::to_string(mTotal) + " ";
        // A line that wraps could no longer be erased with a carriage return; the label loses
        // its beginning rather than its end, so that the file's name stays in view.
        const std::size_t room = mWidth - 1 > line.size() + 3 ? mWidth - 1 - line.size() : 3;
        line += label.size() <= room ? label : "..." + tailUtf8(label, room - 3);
        truncateUtf8(line, mWidth - 1);
        std::cerr << "\r\033[K" << line << std::flush;
        mVisible = true;
    }

    void clear() {
        if (mVisible) {
            std::cerr << "\r\033[K" << std::flush;
            mVisible = false;
        }
    }

private:
    std::size_t mTotal;
    bool mEnabled;
    std::size_t mWidth;
    bool mVisible = false;
};

struct SharedState {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<char> done;  // per job, set once its report is complete
    std::vector<char> ok;
    std::size_t finished = 0;
};

bool runJob(std::size_t index, const std::string& label, JobReport& report,
            const std::function<bool(std::size_t, JobReport&)>& work) {
    tCurrentReport = &report;
    tCurrentLabel = &label;
    bool ok = false;
    try {
        ok = work(index, report);
    } catch (const std::exception& e) {
        report.err += label + ": " + e.what() + '\n';
    } catch (...) {
        report.err += label + ": unexpected failure\n";
    }
    tCurrentReport = nullptr;
    tCurrentLabel = nullptr;
    return ok;
}

// False when standard output could not take the report (a full disk, a closed pipe).
bool printReport(std::size_t index, const std::vector<std::string>& labels, bool verbose,
                 JobReport& report) {
    if (verbose) {
        std::cerr << '[' << index + 1 << '/' << labels.size() << "] " << labels[index] << '\n';
    }
    std::cerr << report.err << std::flush;
    const bool hadOutput = !report.out.empty();
    std::cout << report.out << std::flush;
    report = JobReport();  // printed: no need to hold it until the end
    if (hadOutput && !std::cout) {
        std::cerr << labels[index] << ": standard output could not be written\n";
        std::cout.clear();
        return false;
    }
    return true;
}

// Prints every report as soon as it and all before it are complete.
void printInOrder(SharedState& state, const std::vector<std::string>& labels, bool verbose,
                  std::vector<JobReport>& reports) {
    const std::size_t total = labels.size();
    ProgressBar bar(total, total > 1 && isatty(STDERR_FILENO));
    std::size_t printed = 0;
    std::size_t seen = 0;
    std::unique_lock<std::mutex> lock(state.mutex);
    while (printed < total) {
        state.changed.wait(lock, [&] { return state.done[printed] || state.finished != seen; });
        seen = state.finished;
        std::size_t ready = printed;
        while (ready < total && state.done[ready]) {
            ++ready;
        }
        lock.unlock();
        if (ready > printed) {
            bar.clear();
        }
        std::vector<std::size_t> unprinted;
        for (; printed < ready; ++printed) {
            if (!printReport(printed, labels, verbose, reports[printed])) {
                unprinted.push_back(printed);
            }
        }
        bar.show(seen, labels[std::min(printed, total - 1)]);
        lock.lock();
        for (const std::size_t index : unprinted) {
            state.ok[index] = 0;
        }
    }
    lock.unlock();
    bar.clear();
}

}  // namespace

std::size_t RunBatch(const std::vector<std::string>& labels, const BatchSettings& settings,
                     const std::function<bool(std::size_t, JobReport&)>& work) {
    const std::size_t total = labels.size();
    std::vector<JobReport> reports(total);
    SharedState state;
    state.done.assign(total, 0);
    state.ok.assign(total, 0);
    std::atomic<std::size_t> next{0};
    const auto worker = [&] {
        for (std::size_t i = next++; i < total; i = next++) {
            const bool ok = runJob(i, labels[i], reports[i], work);
            const std::lock_guard<std::mutex> lock(state.mutex);
            state.ok[i] = ok;
            state.done[i] = 1;
            ++state.finished;
            state.changed.notify_one();
        }
    };
    const std::size_t threadCount = std::min<std::size_t>(std::max(settings.jobs, 1u), total);
    std::vector<std::thread> threads;
    try {
        while (threads.size() < threadCount) {
            threads.emplace_back(worker);
        }
    } catch (const std::system_error&) {
        // Fewer threads than asked for; with none at all, the work runs here first.
        if (threads.empty()) {
            worker();
        }
    }
    printInOrder(state, labels, settings.verbose, reports);
    for (std::thread& thread : threads) {
        thread.join();
    }
    return static_cast<std::size_t>(std::count(state.ok.begin(), state.ok.end(), 0));
}

void ReportingLog::write(const tqLogObject& object) {
    const std::string line = object.category + ": " + object.text + '\n';
    if (tCurrentReport != nullptr) {
        tCurrentReport->err += *tCurrentLabel + ": " + line;
    } else {
        std::cerr << line;
    }
}
