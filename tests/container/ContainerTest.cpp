#include "Alerts.h"
#include "ForeignObject.h"
#include "StoredBytes.h"

#include <gtest/gtest.h>

#include <random>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::Warnings;
using Path = std::vector<std::string>;

std::shared_ptr<DataContainer> Numbered(const std::vector<std::string>& keys) {
    const auto container = DataContainer::Create();
    for (const std::string& key : keys)
        container->PutValue(key, static_cast<int>(key.size()));
    return container;
}

} // namespace

TEST(Container, RefusesNothingness) {
    const auto container = Numbered({"a"});
    const auto former = container->Get("a");
    const Warnings warnings;
    container->Put("a", std::shared_ptr<DataObject>());
    container->Put("b", std::shared_ptr<DataContainer>());
    const std::string text =
        "PutNullDataPtr [Qor.Tivor.DataContainer.Put] Attempted to store a NULL shared ptr as data "
        "under key ";
    EXPECT_EQ(warnings.Tell(), (Path{text + 'a', text + 'b'}));
    EXPECT_EQ(warnings.seen[0].GetSeverity(), 1u);
    EXPECT_EQ(container->Get("a"), former);
    EXPECT_EQ(Keys(*container), "a ");
}

TEST(Container, GivesValuesOfExactlyTheirType) {
    DataContainer container;
    container.PutValue("n", 5);
    container.PutValue("t", "text");
    container.Put("w", L"wide");
    EXPECT_EQ(container.GetValue<std::string>("t"), "text");
    EXPECT_EQ(container.GetValue<std::wstring>("w"), L"wide");
    EXPECT_FALSE(container.GetValue<short>("n") || container.GetValue<int>("t") || container.GetValue<int>("no"));
    *container.GetPtr<int>("n") = 6;
    EXPECT_EQ(*std::as_const(container).GetPtr<int>("n"), 6);
    EXPECT_FALSE(std::as_const(container).GetPtr<double>("n"));
}

TEST(Container, FollowsPaths) {
    const auto root = Numbered({"plain"});
    const auto inner = root->GetSubData({"a", "b", ""}, true);
    ASSERT_TRUE(inner);
    EXPECT_EQ(root->GetSubData({"a", "b", ""}, true), inner);
    EXPECT_EQ(root->GetSubData({"a", "b"}, false)->GetSubData({""}, false), inner);
    const std::string before = Stored(*root);
    for (const Path& path : {Path{}, {"plain"}, {"plain", "x"}})
        EXPECT_FALSE(root->GetSubData(path, false) || root->GetSubData(path, true));
    for (const Path& path : {Path{"x"}, {"a", "x"}, {"a", "b", "", "x", "y"}})
        EXPECT_FALSE(root->GetSubData(path, false));
    EXPECT_EQ(Stored(*root), before);
    root->DefaultToLockableData(true);
    EXPECT_FALSE(root->GetSubData({"new"}, true)->DefaultsToLockableData());
}

TEST(Container, SharesOrClones) {
    const auto source = Numbered({"a", "bb"});
    const auto deep = source->GetSubData({"sub"}, true);
    deep->PutValue("c", 1);
    const auto target = Numbered({"x", "bb"});
    *target += *source;
    EXPECT_EQ(Keys(*target), "x bb a sub ");
    EXPECT_EQ(target->Get("bb"), source->Get("bb"));
    EXPECT_EQ(target->GetSubData({"sub"}, false), deep);
    target->Append(*target);
    target->Assign(*target);
    EXPECT_EQ(Keys(*target), "x bb a sub ");
    *target = *source;
    EXPECT_EQ(Keys(*target), "a bb sub ");
    EXPECT_EQ(DataContainer(*source).Get("a"), source->Get("a"));
    const auto into = Numbered({"old"});
    into->CloneContents(*source);
    for (const auto& clone : {source->Clone(), DataContainer::Create(*source), into}) {
        EXPECT_EQ(Stored(*clone), Stored(*source));
        EXPECT_NE(clone->Get("a"), source->Get("a"));
        clone->GetSubData({"sub"}, false)->PutValue("c", 2);
        EXPECT_EQ(deep->GetValue<int>("c"), 1);
    }
}

TEST(Container, ComparesEntriesInAnyOrder) {
    const auto same = std::make_shared<ForeignObject>();
    const auto left = Numbered({"a", "bb"});
    const auto right = Numbered({"bb", "a"});
    EXPECT_TRUE(*left == *right);
    left->Put("f", same);
    EXPECT_FALSE(*left == *right || *right == *left);
    right->Put("f", same);
    EXPECT_TRUE(*left == *right);
    right->Put("f", same->Clone()); // nobody knows whether the two are equal
    EXPECT_TRUE(*left != *right);
    right->Put("f", same);
    for (const int n : {1, 2}) {
        left->GetSubData({"sub"}, true)->PutValue("n", n);
        right->GetSubData({"sub"}, true)->PutValue("n", 2);
        EXPECT_EQ(*left == *right, n == 2);
    }
    right->PutValue("a", 1.0);
    EXPECT_TRUE(*left != *right);
}

TEST(Container, WalksASnapshot) {
    const auto container = Numbered({"a", "bb", "ccc"});
    std::string walked;
    for (const DataContainer::Entry& entry : *container) {
        walked += entry.key + entry.object->ToString();
        container->Remove("bb");
        container->PutValue("ccc", 7);
        container->PutValue(entry.key + "+", 1);
    }
    EXPECT_EQ(walked, "a1bb2ccc3");
    EXPECT_EQ(Keys(*container), "a ccc a+ bb+ ccc+ ");
    for (const bool lock : {false, true})
        DataContainer::ForAllDataIn(
            *container,
            [&](const std::string& key, const auto&) {
                container->Remove(key);
                container->PutValue("z", 0);
            },
            lock);
    EXPECT_EQ(Keys(*container), "z ");
    auto walk = container->begin();
    const auto former = walk++;
    EXPECT_TRUE(walk == container->end() && former->key == "z" && former == former);
}

// In the order of first insertion, against a list that is searched from its beginning.
TEST(Container, AgreesWithASimpleModel) {
    using Model = std::vector<std::pair<std::string, std::shared_ptr<DataObject>>>;
    std::mt19937 random(20240607);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    DataContainer container;
    Model model;
    Model walked;
    DataContainer::Iterator walk;
    for (int step = 0; step < 2500; ++step) {
        const std::string key = below(30) == 0 ? std::string(below(3), '\0') : 'k' + std::to_string(below(150));
        const auto at = std::find_if(model.begin(), model.end(), [&](const auto& entry) { return entry.first == key; });
        EXPECT_EQ(container.Get(key), at != model.end() ? at->second : nullptr);
        EXPECT_EQ(container.Exists(key), at != model.end());
        if (below(100) < (step / 400 % 2 == 0 ? 75u : 25u)) {
            const auto object = MakeData(step);
            container.Put(key, object);
            at != model.end() ? void(at->second = object) : void(model.emplace_back(key, object));
        } else {
            EXPECT_EQ(container.Remove(key), at != model.end() ? at->second : nullptr);
            if (at != model.end())
                model.erase(at);
        }
        if (below(600) == 0) {
            container.Clear();
            model.clear();
        }
        EXPECT_EQ(container.NumDataObjects(), model.size());
        EXPECT_EQ(container.IsEmpty(), model.empty());
        if (step % 20 != 0)
            continue;
        std::vector<std::string> keys{"first"};
        std::set<std::string> sorted{"first"};
        container.EnumData(keys);
        container.EnumData(sorted);
        EXPECT_EQ(sorted, std::set(keys.begin(), keys.end()));
        Model found;
        for (; walk != container.end(); ++walk)
            found.emplace_back(walk->key, walk->object);
        ASSERT_EQ(found, walked) << "a walk that began 20 steps before " << step;
        walk = container.begin();
        walked = model;
        EXPECT_TRUE(std::equal(keys.begin() + 1, keys.end(), model.begin(), model.end(),
                               [](const std::string& one, const auto& entry) { return one == entry.first; }));
    }
}

TEST(Container, MakesLockableObjectsWhenToldTo) {
    for (const bool byDefault : {false, true}) {
        DataContainer container(byDefault);
        const auto handedIn = MakeData(1);
        container.Put("given", handedIn);
        container.PutValue("made", 1);
        container.Put("text", "t");
        container.Put("yes", "t", true, true);
        container.Put("no", L"t", true, false);
        container.Put("unwritten", L"t", false);
        ReadInto(container, Bytes("04 000000 'read' 01 01 00000000 7F FFFF"));
        ReadXMLInto(container,
                    "<DataContainer><Data key='xml' typeid='1' encoding='def/hex64'>1</Data></DataContainer>");
        std::string lockable;
        for (const auto& entry : container)
            lockable += entry.object->IsLockable() ? entry.key + " " : "";
        EXPECT_EQ(lockable, byDefault ? "made text yes unwritten read xml " : "yes ");
        EXPECT_FALSE(container.Get("unwritten")->SerializationIsEnabled());
        EXPECT_EQ(container.Clone()->DefaultsToLockableData(), byDefault);
    }
}

// A program may hold the library's strings itself: they must be whole there, and one and the same for both.
TEST(ExportedStrings, AreOneForAll) {
    for (const std::string* const text : {&sMETA_DATA, &Serializer::sDEFAULT_HEX64_ENCODING}) {
        const auto* const object = reinterpret_cast<const char*>(text);
        EXPECT_TRUE(text->data() >= object && text->data() < object + sizeof *text) << *text;
    }
}

} // namespace Qor::Tivor::Testing
