// Test cases kept as data under tests/data. Text fields may hold the escapes \t \r \n \\ and
// \xHH, so that any byte can be written on one line.
//   Tables: one case a line, fields separated by tabs; blank lines and "# " comments are skipped.
//   Blocks: "== title" starts a case, "-- name" a section of it; the lines up to the next marker
//   are the section's text (joined by newlines); blank lines and "# " comments are skipped.
#pragma once

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tq::test {

inline std::string Unescape(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out += text[i];
            continue;
        }
        const char c = text[++i];
        if (c == 'x' && i + 2 < text.size()) {
            out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += c == 't' ? '\t' : c == 'r' ? '\r' : c == 'n' ? '\n' : c;
        }
    }
    return out;
}

inline std::vector<std::string> DataLines(const std::string& name) {
    std::ifstream in(std::string(TQSVG_TEST_DATA_DIR "/") + name, std::ios::binary);
    EXPECT_TRUE(in.good()) << name;
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

inline std::vector<std::vector<std::string>> ReadTable(const std::string& name) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : DataLines(name)) {
        if (line.empty() || line.rfind("# ", 0) == 0) {
            continue;
        }
        rows.emplace_back();
        for (std::size_t from = 0, tab = 0; tab != std::string::npos; from = tab + 1) {
            tab = line.find('\t', from);
            rows.back().push_back(Unescape(line.substr(from, tab - from)));
        }
    }
    return rows;
}

struct CaseBlock {
    std::string title;
    std::map<std::string, std::string> sections;
};

inline std::vector<CaseBlock> ReadBlocks(const std::string& name) {
    std::vector<CaseBlock> blocks;
    std::string* section = nullptr;
    for (const std::string& line : DataLines(name)) {
        if (line.empty() || line.rfind("# ", 0) == 0) {
            continue;
        }
        if (line.rfind("== ", 0) == 0) {
            blocks.push_back({line.substr(3), {}});
            section = nullptr;
        } else if (line.rfind("-- ", 0) == 0 && !blocks.empty()) {
            section = &blocks.back().sections[line.substr(3)];
        } else if (section != nullptr) {
            *section += (section->empty() ? "" : "\n") + Unescape(line);
        }
    }
    return blocks;
}

}  // namespace tq::test
