// Resource files. What opens is read to the end of each member, within the size that is declared; written again, plain or
// compressed by the first byte, it opens with the same tree and the same bytes.
#include "base/source/finitializer.h"
#include "demand.h"
#include "storage/fcstream.h"
#include "storage/fresourcearchive.h"
#include <algorithm>
#include <string>
#include <vector>

using namespace Tessarine;

namespace {
constexpr size_t kMaxBytes = 1 << 16;  // of all members of an input: more is told by a table in no time
char buffer[kMaxBytes];

/** Shows its stream. */
class Target : public FResourceArchive {
public:
    using FResourceArchive::FResourceArchive;
    using FResourceArchive::getStream;
};

/** What a member gives, as far as the budget goes; nothing if its path leads to another one of that name. */
std::string contentOf(FResourceArchive& archive, const FFileArchiveNode& node, size_t& budget) {
    FPath path;
    node.getPath(path);
    const OPtr<FStream> stream(archive.lookupNode(&path) == &node ? archive.openFile(&path, kOpenRead) : nullptr);
    const int64_t size = stream ? stream->readRaw(buffer, int64_t(budget)) : 0;
    const int64_t declared = archive.getEngine() ? node.getUncompressedSize() : node.getDataSize();
    demand(size <= std::max<int64_t>(declared, 0));
    budget -= size_t(size);
    return {buffer, size_t(size)};
}

/** The same tree, and what each of its nodes holds. */
std::vector<std::string> copyTree(FResourceArchive& from, Target& to) {
    std::vector<std::string> contents;
    std::vector<FFileArchiveNode*> folders = {to.getTree()};
    size_t budget = kMaxBytes;
    int32_t level = 1;
    const FFileArchiveNode* root = from.getTree();
    for (const FFileArchiveNode* node = root->getFirstChild(); node; node = node->getNextBelow(root, &level)) {
        contents.push_back(node->isFolder() ? "" : contentOf(from, *node, budget));
        OPtr<FFileArchiveNode> copy(to.newNode(node->isFolder()));
        FString name;
        node->getFileName(name);
        copy->setFileName(name);
        FMemoryStream bytes(contents.back().data(), int32_t(contents.back().size()));
        if (!node->isFolder())
            demand(to.copyInto(&bytes, to.getStream(), static_cast<FResourceEntry*>(copy.get()), nullptr));
        folders.resize(size_t(level));
        folders.push_back(copy.detach());
        demand(folders[size_t(level) - 1]->addChild(folders.back()));
    }
    return contents;
}

void demandSame(FResourceArchive& first, FResourceArchive& second, const std::vector<std::string>& contents) {
    const FFileArchiveNode *node = first.getTree(), *copy = second.getTree();
    size_t budget = kMaxBytes;
    for (const std::string& content : contents) {
        node = node->getNextBelow(first.getTree());
        copy = copy->getNextBelow(second.getTree());
        FString name, copiedName;
        node->getFileName(name);
        copy->getFileName(copiedName);
        demand(name == copiedName && node->isFolder() == copy->isFolder());
        demand(copy->isFolder() || copy->getUncompressedSize() == int64_t(content.size()));
        demand(copy->isFolder() || contentOf(second, *copy, budget) == content);
    }
    demand(!copy->getNextBelow(second.getTree()));
}

void check(FResourceArchive& archive, int32_t flags) {
    FMemoryStream again;
    const OPtr<Target> writer(new Target(&again));
    demand(writer->create(flags, nullptr));
    const std::vector<std::string> contents = copyTree(archive, *writer);
    demand(writer->writeContent());
    const OPtr<FResourceArchive> second(new FResourceArchive(&again));
    demand(second->open() && second->isTableWhole());
    demandSame(archive, *second, contents);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool ready = OneTimeProcedure::initialize(UINT32_MAX);
    demand(ready);
    if (size < 1)
        return 0;
    FMemoryStream source;
    source.writeRaw(data + 1, int64_t(size - 1));
    const OPtr<FResourceArchive> archive(new FResourceArchive(&source));
    if (archive->open())
        check(*archive, data[0] & FResourceArchive::kCompress);
    return 0;
}
