#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class FMessage;
class FTemplateNode;
class FViewNode;
class UBaseView;
class UIDescription;
class UValue;
class UView;

/** What stands behind a tree of views: while a template is turned into views, it is asked by name for what they show.
    Values, controllers and views that are handed out are borrowed; null: there is none. Main thread. */
class IController : public FUnknown {
public:
    /** A message from a view or a window; 0: not handled. */
    virtual int32_t onNotify(FMessage* message) = 0;
    /** The value for a control. */
    virtual UValue* lookupValue(const char* name) = 0;
    /** Whether a variant of the template applies. */
    virtual bool testCondition(const char* /*name*/) { return false; }
    /** The controller for a part of the tree. */
    virtual IController* lookupSubController(const char* name) = 0;
    /** owned: a reference is added; otherwise who injects it withdraws it, with null, before it dies. */
    virtual bool injectSubController(IController* controller, const char* name, bool owned) = 0;
    /** A view instead of the usual one, which belongs to the caller; null: none. */
    virtual UView* createView(FViewNode* /*node*/, UIDescription* /*description*/) { return nullptr; }
    /** Sees each new view; what it answers takes its place. */
    virtual UView* verifyView(UView* view, FViewNode* /*node*/) { return view; }
    /** A template's view stands. */
    virtual void postCreateView(UBaseView* /*view*/, FTemplateNode* /*node*/) {}

    DECLARE_INTERFACE(IController)
};

}  // namespace Tessarine
