#include "support/doc_examples.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "support/process.h"

namespace {

struct Block {
    int line;  // of the opening fence
    std::string tag;
    std::vector<std::string> args;
    std::string text;
    bool adjacent;  // only blank lines stand between it and the block before
};

std::vector<Block> blocks(std::string const& md) {
    std::vector<Block> out;
    std::istringstream in(md);
    Block* open = nullptr;
    int n = 0;
    bool adjacent = false;
    for (std::string line; std::getline(in, line);) {
        ++n;
        if (line.compare(0, 3, "```") != 0) {
            if (open)
                open->text += line + "\n";
            else
                adjacent = adjacent && line.find_first_not_of(" \t") == std::string::npos;
            continue;
        }
        if (open) {
            open = nullptr;
            adjacent = true;
            continue;
        }
        std::istringstream words(line.substr(3));
        out.push_back({n, "", {}, "", adjacent});
        open = &out.back();
        words >> open->tag;
        open->args.assign(std::istream_iterator<std::string>(words), {});
    }
    return out;
}

}  // namespace

std::vector<DocExample> docExamples() {
    std::vector<std::string> docs;
    for (auto const& entry : std::filesystem::directory_iterator(std::string(ZYLCOMP_TESTS_DIR) + "/../doc"))
        if (entry.path().extension() == ".md")
            docs.push_back(entry.path().string());
    std::sort(docs.begin(), docs.end());
    std::vector<DocExample> out;
    for (std::string const& doc : docs) {
        std::vector<Block> const all = blocks(readFile(doc));
        std::vector<std::pair<std::string, std::string>> files;  // for the next compiled block
        for (size_t i = 0; i < all.size(); ++i) {
            Block const& b = all[i];
            if (b.tag == "zyl" && !b.args.empty() && b.args[0].compare(0, 5, "file=") == 0) {
                files.emplace_back(b.args[0].substr(5), b.text);
                continue;
            }
            if (b.tag != "zyl" && b.tag != "zyl-error")
                continue;
            bool const answered = i + 1 < all.size() && all[i + 1].tag == "text" && all[i + 1].adjacent;
            std::string err = answered ? all[i + 1].text : "";
            err.erase(err.find_last_not_of('\n') + 1);
            out.push_back({std::filesystem::path(doc).filename().string() + ":" + std::to_string(b.line),
                           b.tag == "zyl-error", b.args, b.text, err, answered, std::move(files)});
            files.clear();
        }
    }
    return out;
}
