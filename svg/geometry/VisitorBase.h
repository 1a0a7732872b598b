// Depth-first walk over an item tree with the transform and the properties in force.
#pragma once

#include <functional>
#include <vector>

#include <Wm4Foundation/Wm4Matrix3.h>

#include "svg/model/ItemInterface.h"
#include "svg/model/RenderingProperties.h"
#include "svg/tqSvgExport.h"

namespace tq::svg {

// How an item's own transform or properties enter the stacks.
enum class PropertyMergeMode : int {
    Ignore = 0,   // nothing pushed, nothing popped
    Replace = 1,  // the item's own value as it is
    Merge = 2,    // transform composed with the top, properties cascaded from it
};

// Hands the callback every item with its composed transform (ancestors times item, the initial
// transform outermost) and its cascaded properties. The callback's result says whether to
// descend into a node's children. The walk keeps its own stack, so the depth of the tree is
// bounded by memory, not by the call stack. A visitor only reads the tree: several may walk one
// tree at once, each on its own thread.
template <class Item>
class VisitorBase {
public:
    using Callback = std::function<bool(Item&, const Wm4::Matrix3f&, const RenderingProperties&)>;

    // A null `initialTransform` means identity.
    VisitorBase(const Callback& callback, const Wm4::Matrix3f* initialTransform);
    virtual ~VisitorBase();

    // Visits `root` and its subtree.
    void visitItemTree(Item& root);

    // Pushes the item's context and returns the callback's answer (an empty callback throws
    // std::bad_function_call).
    bool onEnterSvgItem(Item& item);
    // Pops exactly what onEnterSvgItem pushed.
    void onLeaveSvgItem(Item& item);

    const Wm4::Matrix3f& getCurrentTransform() const { return mTransforms.back(); }
    const RenderingProperties& getCurrentProperties() const { return mProperties.back(); }

private:
    void pushTransform(const Wm4::Matrix3f& transform, bool compose);
    void popTransform();
    void pushProperties(const RenderingProperties& properties, bool cascade);
    void popProperties();
    void pushItemContext(Item& item, PropertyMergeMode transformMode,
                         PropertyMergeMode propertiesMode);
    void popItemContext(Item& item, PropertyMergeMode transformMode,
                        PropertyMergeMode propertiesMode);

    Callback mCallback;
    // Never empty: the base entries are not popped. References to the tops stay valid during a
    // callback because nothing is pushed while it runs.
    std::vector<RenderingProperties> mProperties;
    std::vector<Wm4::Matrix3f> mTransforms;
};

extern template class TQSVG_EXPORT VisitorBase<const ItemInterface>;

}  // namespace tq::svg
