#include "Platform/View.h"

#include <gtest/gtest.h>

using namespace platform;

TEST(View, isFoundByTagDepthFirst) {
    const auto tagged = [](std::int64_t tag, const std::vector<std::shared_ptr<View>>& children = {}) {
        auto view = std::make_shared<View>();
        view->setTag(tag);
        for (const auto& child : children)
            view->addSubview(child);
        return view;
    };
    const auto deep = tagged(5);
    const auto root = tagged(0, {tagged(1, {tagged(2, {deep})}), tagged(5), tagged(-7)});
    EXPECT_EQ(root->viewWithTag(5), deep.get()) << "before the later, shallower one";
    EXPECT_EQ(root->viewWithTag(0), root.get()) << "the view itself";
    EXPECT_EQ(root->viewWithTag(-7), root->subviews()[2].get());
    EXPECT_EQ(root->viewWithTag(3), nullptr);
}

TEST(PopUpButton, selectsWhatItHas) {
    PopUpButton popUp;
    EXPECT_EQ(popUp.indexOfSelectedItem(), -1);
    EXPECT_EQ(popUp.itemAtIndex(0), nullptr);
    for (const char* title : {"a", "b", "c"})
        popUp.addItem({title, "", true, nullptr});
    for (const std::int64_t index : {std::int64_t{-1}, std::int64_t{3}, INT64_MIN, INT64_MAX}) {
        popUp.selectItemAtIndex(1);
        popUp.selectItemAtIndex(index);
        EXPECT_EQ(popUp.indexOfSelectedItem(), 1) << index;
        EXPECT_EQ(popUp.itemAtIndex(index), nullptr) << index;
        EXPECT_FALSE(popUp.pick(index)) << index;
    }
    popUp.removeAllItems();
    EXPECT_EQ(popUp.indexOfSelectedItem(), -1);
}

TEST(PopUpButton, sendsItsActionForAPickOnly) {
    PopUpButton popUp;
    popUp.addItem({"a", "", true, nullptr});
    popUp.addItem({"b", "", true, nullptr});
    popUp.addItem({"off", "", false, nullptr});
    EXPECT_TRUE(popUp.pick(1)) << "without an action";
    std::vector<std::int64_t> sent;
    popUp.setAction([&sent](PopUpButton& sender) { sent.push_back(sender.indexOfSelectedItem()); });
    popUp.selectItemAtIndex(0);
    EXPECT_TRUE(popUp.pick(1));
    EXPECT_TRUE(popUp.pick(1)) << "the same item again";
    EXPECT_FALSE(popUp.pick(2));
    popUp.setEnabled(false);
    EXPECT_FALSE(popUp.pick(0));
    popUp.setEnabled(true);
    popUp.setHidden(true);
    EXPECT_FALSE(popUp.pick(0));
    EXPECT_EQ(sent, (std::vector<std::int64_t>{1, 1}));
    EXPECT_EQ(popUp.indexOfSelectedItem(), 1);

    // An action may replace itself.
    const auto counter = std::make_shared<int>(0);
    popUp.setHidden(false);
    popUp.setAction([counter](PopUpButton& sender) {
        sender.setAction({});
        ++*counter;
    });
    EXPECT_TRUE(popUp.pick(0) && popUp.pick(0));
    EXPECT_EQ(*counter, 1);
    EXPECT_EQ(counter.use_count(), 1);
}
