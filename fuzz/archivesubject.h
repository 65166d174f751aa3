#pragma once
#include "collect/cmarray.h"
#include "demand.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fmstream.h"
#include "storage/fpersistent.h"
#include "storage/fxmlarchive.h"
#include <map>
#include <string>
#include <vector>

/** What the archive fuzzers have in common: objects that refer to each other in all ways, and a text form of what was read. */
namespace ArchiveFuzz {
using namespace Tessarine;

inline int32_t livingNodes = 0;

/** Shares what it holds, but for its owner, which it only knows and never touches. */
class Node : public CmObject {
public:
    DECLARE_CLASS(Node, CmObject)
    Node() { ++livingNodes; }
    ~Node() override { --livingNodes; }

    bool storeAttributes(FAttributes& attributes) const override {
        for (const IPtr<CmObject>& child : children)
            attributes.queueObject("c", child, false);
        return attributes.set("n", number);
    }
    bool restoreAttributes(FAttributes& attributes) override {
        owner = attributes.getObject("o", className());
        for (int32_t left = attributes.countQueueItems("c"); left > 0; --left) {
            auto* child = classCast<Node>(attributes.unqueueObject("c"));
            if (child && child->isWhole && child->height < 500) {
                children.emplace_back(child);
                height = std::max(height, child->height + 1);
            }
        }
        isWhole = true;
        attributes.get("n", number);
        return true;
    }
    bool externalize(FArchive& archive) const override {
        const CmObject* first = children.empty() ? nullptr : children.front().get();
        const CmObject* last = children.size() < 2 ? nullptr : children.back().get();
        return archive.getStream().writeInt64(number) && archive.save(first) && archive.save(last);
    }
    bool internalize(FArchive& archive) override {
        if (!archive.getStream().readInt64(number))
            return false;
        for (int32_t i = 0; i < 2; ++i) {
            const OPtr<CmObject> child(archive.load(className()));
            auto* node = static_cast<Node*>(child.get());
            if (node && node->isWhole && node->height < 500) {
                children.emplace_back(node);
                height = std::max(height, node->height + 1);
            }
        }
        return isWhole = true;
    }

    int64_t number = 0;
    int32_t height = 0;         // of the tree of children
    bool isWhole = false;       // has been read; others would hold each other in a ring
    CmObject* owner = nullptr;  // borrowed
    std::vector<IPtr<CmObject>> children;
};

/** An array that always owns: what one that borrows has read belongs to nobody. */
class Shelf : public CmArray {
public:
    DECLARE_CLASS(Shelf, CmArray)
    bool restoreAttributes(FAttributes& attributes) override {
        attributes.set("ownership", 2);
        return CmArray::restoreAttributes(attributes);
    }
    bool internalize(FArchive& archive) override {
        const bool read = CmArray::internalize(archive);
        _ownsObjects = kTakesOver;
        return read;
    }
};

/** Once: takes the classes away that hold without counting. */
inline bool forgetBorrowingClasses() {
    ClassFactory* factory = ClassFactory::instance(true);
    for (const char* name : {"CmArray", "CmOrderedArray", "CmLinkedList", "CmDLinkedList", "CmIDLinkedList",
                             "CmILinkedList", "CmHashTable", "CmHashDictionary", "CmBTree", "CmBTreeDictionary",
                             "CmDictionary", "CmQueue", "CmStack", "CmAssociation", "CmBufferPool"}) {
        if (MetaClass* metaClass = factory->getMetaClassByName(name))
            factory->unregisterMetaClass(metaClass);
    }
    return true;
}
inline const bool forgotten = forgetBorrowingClasses();

/** Of XML, with ids counted from 1 in the order in which they come. */
inline std::string renumbered(const std::string& text) {
    std::map<std::string, size_t> numbers;
    std::string result;
    bool inValue = false;
    for (size_t at = 0, next; at < text.size(); at = next, inValue = !inValue) {
        next = std::min(text.find('"', at), text.size() - 1) + 1;
        const std::string piece = text.substr(at, next - at);
        const bool isID =
            inValue && (result.ends_with(" ID=\"") || (result.ends_with("<item value=\"") && piece.size() > 12));
        result += isID ? std::to_string(numbers.emplace(piece, numbers.size() + 1).first->second) + '"' : piece;
    }
    return result;
}

/** Shows the roots of an archive. */
template <class Archive>
class Opened : public Archive {
public:
    Opened(FStream* stream, bool writing) : Archive(stream, writing) {}

    template <class Other>
    void takeRootsOf(const Opened<Other>& other) {
        for (int32_t i = 0; i < other.roots.countAttributes(); ++i) {
            auto* root = static_cast<FStringIDAttribute*>(other.roots.getAttributeArray()->at(i));
            this->roots.setObjAttribute(root->getID(), root->getObj(), 0, 4);
        }
        for (int32_t i = 0; i < other.globalRoots.countAttributes(); ++i) {
            auto* root = static_cast<FStringIDAttribute*>(other.globalRoots.getAttributeArray()->at(i));
            this->globalRoots.setObjAttribute(root->getID(), root->getObj(), 0, 4);
        }
    }

private:
    template <class Other>
    friend class Opened;
};

/** What was read, as XML. */
template <class Archive>
std::string textOf(const Opened<Archive>& loaded) {
    FMemoryStream stream;
    Opened<FXmlArchive> writer(&stream, true);
    writer.takeRootsOf(loaded);
    demand(writer.save("T"));
    return renumbered({stream.getData(), static_cast<size_t>(stream.getSize())});
}

/** Writes what was read, and reads that again; false: it can't be written, since it is deeper than it was: what is known is
    unfolded where it is met first. */
template <class Archive, class Save, class Load>
bool passOn(const Opened<Archive>& loaded, FMemoryStream& stream, Opened<Archive>& next, Save save, Load load) {
    Opened<Archive> writer(&stream, true);
    writer.takeRootsOf(loaded);
    if (!save(writer))
        return false;
    stream.rewind();
    return load(next);
}

inline void fill(FMemoryStream& stream, const uint8_t* data, size_t size) {
    stream.writeRaw(data, static_cast<int64_t>(size));
    stream.rewind();
}

/** Of which the first byte says more than the byte order; false: there is none. */
inline bool fillByForm(FMemoryStream& stream, const uint8_t* data, size_t size) {
    if (size < 1)
        return false;
    fill(stream, data + 1, size - 1);
    stream.byteOrder = data[0] & 1;
    return true;
}

/** One file makes the classes. */
#define IMPLEMENT_FUZZ_CLASSES      \
    namespace ArchiveFuzz {         \
    IMPLEMENT_CLASS(Node, CmObject) \
    IMPLEMENT_CLASS(Shelf, CmArray) \
    }
}  // namespace ArchiveFuzz
