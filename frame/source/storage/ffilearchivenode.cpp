#include "base/fconsole.h"
#include "pathsteps.h"
#include "storage/ffilearchive.h"
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace Tessarine {
namespace {
constexpr int32_t kFewChildren = 12;  // are looked through one by one
constexpr int32_t kIndent = 2;        // blanks for each level

FString nameOf(const FFileArchiveNode& node) {
    FString name;
    node.getFileName(name);
    name.toWideString();
    return name;
}

bool isHidden(const FFileArchiveNode& node) {
    return nameOf(node).testChar16(0, u'.');
}
}  // namespace

/** The children sorted by a hash and their names, so that no choice of names makes it slow; those of one name in their
    order. */
class FFileArchiveNode::NameIndex {
public:
    explicit NameIndex(const FFileArchiveNode& folder) {
        entries.reserve(size_t(folder.countChildren()));
        for (FFileArchiveNode* child = folder.getFirstChild(); child; child = child->getNext())
            entries.push_back(entryOf(child));
        std::ranges::stable_sort(entries, {}, [this](const Entry& entry) { return keyOf(entry); });
    }

    /** At the end of the folder. */
    void add(FFileArchiveNode* child) {
        const Entry added = entryOf(child);
        entries.insert(entriesOf(keyOf(added)).end(), added);
    }

    /** false: this one is worn out. */
    bool remove(const FFileArchiveNode* child) {
        const FString name = nameOf(*child);
        const auto same = entriesOf({hashOf(units16(name)), units16(name)});
        const auto entry = std::ranges::find(same, child, &Entry::node);
        if (entry == same.end())
            return false;
        entries.erase(entry);
        return ++gone <= entries.size();
    }

    FFileArchiveNode* find(std::u16string_view name, bool folder) const {
        const auto same = entriesOf({hashOf(name), name});
        const auto fits =
            std::ranges::find_if(same, [=](const Entry& entry) { return !folder || entry.node->isFolder(); });
        return fits == same.end() ? nullptr : fits->node;
    }

private:
    struct Entry {
        size_t hash;
        size_t begin, length;  // in names
        FFileArchiveNode* node;
    };
    using Key = std::pair<size_t, std::u16string_view>;
    using Entries = std::ranges::subrange<std::vector<Entry>::const_iterator>;

    static size_t hashOf(std::u16string_view name) { return std::hash<std::u16string_view>()(name); }
    Key keyOf(const Entry& entry) const {
        return {
            entry.hash, {names.data() + entry.begin, entry.length}
        };
    }
    Entry entryOf(FFileArchiveNode* child) {
        const FString name = nameOf(*child);
        const size_t begin = names.size();
        names += units16(name);
        return {hashOf(units16(name)), begin, name.length(), child};
    }
    Entries entriesOf(const Key& key) const {
        return std::ranges::equal_range(entries, key, {}, [this](const Entry& entry) { return keyOf(entry); });
    }

    std::u16string names;
    std::vector<Entry> entries;
    size_t gone = 0;  // how many were removed, whose names are still there
};

struct FFileArchiveNode::Folder {
    Folder() { children._ownsObjects = CmContainer::kTakesOver; }
    ~Folder() { delete index.load(); }

    CmILinkedList children;
    std::atomic<NameIndex*> index{nullptr};  // made by who first needs it, on any thread
};

IMPLEMENT_ABSTRACT_CLASS(FFileArchiveNode, CmILink)

FFileArchiveNode::FFileArchiveNode() = default;

/** However deep the tree is: what dies within the death of another node hands its children to that one. */
FFileArchiveNode::~FFileArchiveNode() {
    static thread_local std::vector<FFileArchiveNode*>* dying = nullptr;
    if (!content)
        return;
    std::vector<FFileArchiveNode*> orphans;
    const bool isOutermost = !dying;
    if (isOutermost)
        dying = &orphans;
    while (auto* child = static_cast<FFileArchiveNode*>(content->children.removeFirst())) {
        child->parent = nullptr;
        dying->push_back(child);
    }
    if (!isOutermost)
        return;
    while (!orphans.empty()) {
        FFileArchiveNode* orphan = orphans.back();
        orphans.pop_back();
        orphan->release();
    }
    dying = nullptr;
}

void FFileArchiveNode::getDisplayString(FString& text) const {
    text = nameOf(*this);
}

void FFileArchiveNode::setReference(const FNPath* outside) {
    reference = outside ? std::make_unique<FNPath>(*outside) : nullptr;
    flags = outside ? flags | kReference : flags & ~kReference;
}

FFileArchiveNode* FFileArchiveNode::getFirstChild() const {
    return content ? static_cast<FFileArchiveNode*>(content->children.at(0)) : nullptr;
}

FFileArchiveNode* FFileArchiveNode::getNextBelow(const FFileArchiveNode* top, int32_t* level) const {
    FFileArchiveNode* child = getFirstChild();
    if (!child)
        return getNextBeyond(top, level);
    if (level)
        ++*level;
    return child;
}

FFileArchiveNode* FFileArchiveNode::getNextBeyond(const FFileArchiveNode* top, int32_t* level) const {
    const FFileArchiveNode* node = this;
    for (; node && node != top && !node->next; node = node->parent)
        if (level)
            --*level;
    return node && node != top ? node->getNext() : nullptr;
}

int32_t FFileArchiveNode::countChildren() const {
    return content ? content->children.total() : 0;
}

bool FFileArchiveNode::addChild(FFileArchiveNode* child) {
    if (!child || child->parent || child == this)
        return false;
    if (child->content)
        for (const FFileArchiveNode* above = parent; above; above = above->parent)
            if (above == child)
                return false;
    if (!content)
        content = std::make_unique<Folder>();
    if (!content->children.append(child))
        return false;
    child->parent = this;
    if (NameIndex* index = content->index)
        index->add(child);
    return true;
}

bool FFileArchiveNode::remove(FFileArchiveNode* child) {
    if (!child || child->parent != this)
        return false;
    child->parent = nullptr;
    if (NameIndex* index = content->index; index && !index->remove(child))
        dropIndex();
    return content->children.removeAbs(child);
}

FFileArchiveNode* FFileArchiveNode::findChild(std::u16string_view name) const {
    return findNamed(name, false);
}

FFileArchiveNode* FFileArchiveNode::getSubFolder(std::u16string_view name) const {
    return findNamed(name, true);
}

void FFileArchiveNode::getPath(FPath& path) const {
    std::vector<FString> names;
    for (const FFileArchiveNode* node = this; node->parent; node = node->parent)
        names.push_back(nameOf(*node));
    FString text;
    for (size_t i = names.size(); i-- > 0;) {
        text += names[i];
        if (i > 0)
            text += u'/';
    }
    path.fromString(text.text16(), isFolder() ? kFolderPath : kFilePath);
}

bool FFileArchiveNode::hasPlainName() const {
    return isPlainStep(units16(nameOf(*this)));
}

int32_t FFileArchiveNode::countFiles(bool recursive, bool withHidden, uint64_t* bytes) const {
    int32_t count = 0;
    uint64_t sum = 0;
    for (const FFileArchiveNode* node = getFirstChild(); node;) {
        const bool counts = withHidden || !isHidden(*node);
        if (counts && !node->isFolder()) {
            ++count;
            sum += std::min(uint64_t(std::max<int64_t>(node->getUncompressedSize(), 0)), UINT64_MAX - sum);
        }
        node = recursive && counts ? node->getNextBelow(this) : node->getNextBeyond(this);
    }
    if (bytes)
        *bytes = sum;
    return count;
}

void FFileArchiveNode::dump(FConsole* console, int32_t level) const {
    if (!console)
        return;
    writeLine(console, level++);
    for (const FFileArchiveNode* node = getFirstChild(); node; node = node->getNextBelow(this, &level))
        node->writeLine(console, level);
}

void FFileArchiveNode::nameChanged() {
    if (parent)
        parent->dropIndex();
}

FFileArchiveNode* FFileArchiveNode::findNamed(std::u16string_view name, bool folder) const {
    if (const NameIndex* index = nameIndex())
        return index->find(name, folder);
    FFileArchiveNode* child = getFirstChild();
    while (child && ((folder && !child->isFolder()) || units16(nameOf(*child)) != name))
        child = child->getNext();
    return child;
}

/** Null: there are too few children for one. */
const FFileArchiveNode::NameIndex* FFileArchiveNode::nameIndex() const {
    if (countChildren() <= kFewChildren)
        return nullptr;
    NameIndex* known = content->index.load(std::memory_order_acquire);
    if (known)
        return known;
    auto made = std::make_unique<NameIndex>(*this);
    return content->index.compare_exchange_strong(known, made.get()) ? made.release() : known;
}

void FFileArchiveNode::dropIndex() {
    delete content->index.exchange(nullptr);
}

void FFileArchiveNode::writeLine(FConsole* console, int32_t level) const {
    FString line, text;
    line.assign(u' ', std::clamp(level, 0, FFileSystem::kMaxDepth) * kIndent);
    getDisplayString(text);
    text += FString().printf("(%04X)", uint32_t(flags));
    if (!parent)
        line += u"root\n";
    else if (isFolder())
        ((line += u"<") += text) += u">\n";
    else
        ((line += u"\"") += text) += FString().printf("\" size = %lld Bytes, offset = %lld\n", (long long)getDataSize(),
                                                      (long long)getDataOffset());
    console->deferWrite(line);
}

}  // namespace Tessarine
