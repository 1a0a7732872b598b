#include "svg/path/PathVisitorStrToCommands.h"

#include "svg/path/detail/CommandRecordSink.h"
#include "svg/path/detail/PathData.h"
#include "svg/path/detail/PathDataScanner.h"

namespace tq::svg {

PathVisitorStrToCommands::PathVisitorStrToCommands(const std::string& text,
                                                   std::list<Path::Command>& out)
    : mText(text), mOut(out) {}

bool PathVisitorStrToCommands::visit() {
    return detail::ReadSubsetPathData(mText, mOut, mError);
}

bool ConvertPathStringToCommands(const std::string& text, std::list<Path::Command>& out,
                                 std::string* error) {
    std::string message;
    const bool ok = detail::ReadSubsetPathData(text, out, message);
    if (!ok && error != nullptr) {
        *error = std::move(message);
    }
    return ok;
}

namespace detail {

bool ReadSubsetPathData(std::string_view text, std::list<Path::Command>& out, std::string& error) {
    CommandRecordSink sink(out);
    PathDataScanner<SubsetGrammar, CommandRecordSink> scanner(text, sink);
    const bool ok = scanner.scan();
    error = scanner.error();
    return ok;
}

}  // namespace detail

}  // namespace tq::svg
