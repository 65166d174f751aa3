#pragma once
#include "archiveprobes.h"
#include "storage/fattributearchive.h"

namespace Tessarine {

/** An object of a graph: a number, children that it shares, and a parent that it only knows. Counts its living. */
class StoredNode : public CmObject {
public:
    DECLARE_CLASS(StoredNode, CmObject)
    explicit StoredNode(int32_t number = 0) : number(number) { ++living; }
    ~StoredNode() override { --living; }

    StoredNode* add(int32_t childNumber) {
        const OPtr<StoredNode> child(new StoredNode(childNumber));
        child->parent = this;
        add(child.get());
        return child;
    }
    void add(StoredNode* child) { children.push_back(child); }
    bool storeAttributes(FAttributes& attributes) const override {
        attributes.set("number", number);
        for (const IPtr<StoredNode>& child : children)
            attributes.queueObject("children", child, false);
        return number >= 0 && (!parent || attributes.setObject("parent", parent));
    }
    bool restoreAttributes(FAttributes& attributes) override {
        parent = static_cast<StoredNode*>(attributes.getObject("parent", "StoredNode"));
        for (int32_t left = attributes.countQueueItems("children"); left > 0; --left)
            if (auto* child = static_cast<StoredNode*>(attributes.unqueueObject("children", "StoredNode")))
                add(child);
        return attributes.get("number", number) && number != 13;
    }

    int32_t number;
    std::vector<IPtr<StoredNode>> children;
    StoredNode* parent = nullptr;
    inline static int32_t living = 0;
};

}  // namespace Tessarine
