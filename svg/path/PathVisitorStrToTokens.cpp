#include "svg/path/PathVisitorStrToTokens.h"

#include "svg/path/detail/PathDataScanner.h"

namespace tq::svg {

namespace {

// Gathers a command's groups into one flat list and hands it over when the command is complete.
struct FlatSink {
    std::vector<float>& numbers;
    const PathVisitorStrToTokens::Callback& callback;
    char letter = 0;

    void begin(char commandLetter) {
        letter = commandLetter;
        numbers.clear();
    }
    // One value at a time: a range insert costs more than a group of at most seven pushes.
    void group(const float* values, int count) {
        for (int i = 0; i < count; ++i) {
            numbers.push_back(values[i]);
        }
    }
    // The scratch itself, so that no command allocates; a receiver that takes it over leaves an
    // empty vector, which the next command refills.
    void end() { callback(letter, std::move(numbers)); }
    void abandon() {}
};

}  // namespace

PathVisitorStrToTokens::PathVisitorStrToTokens(const std::string& text, Callback callback)
    : mText(text), mCallback(std::move(callback)) {}

bool PathVisitorStrToTokens::visit() {
    FlatSink sink{mNumbers, mCallback};
    detail::PathDataScanner<detail::SubsetGrammar, FlatSink> scanner(mText, sink);
    const bool ok = scanner.scan();
    mError = scanner.error();
    return ok;
}

}  // namespace tq::svg
