#include "StoredBytes.h"

#include <Tivor/ScalarData.h>

#include <gtest/gtest.h>

#include <functional>
#include <thread>

namespace Qor::Tivor::Testing {

namespace {

/// Writes down what its hooks hear, calls back into the container, and checks that all mutexes are free.
class Recorder final : public DataContainer {
public:
    Recorder() { ReceiveChanges(); }
    ~Recorder() override { StopChanges(); }

    using DataContainer::BeginDataAccess;
    using DataContainer::StopChanges;

    std::string Take() {
        std::sort(m_heard.begin(), m_heard.end());
        std::string all;
        for (const std::string& line : std::exchange(m_heard, {}))
            all += line + "; ";
        return all;
    }
    std::vector<std::shared_ptr<Core::Mutex>> others;
    bool callsBack = false;
    bool foundLocked = false;

protected:
    void OnDataObjectChanged(const std::string& key, std::shared_ptr<DataObject> object) override {
        Hear((object ? "object " : "none ") + key, key, object);
    }
    void OnDataReferenceChanged(const std::string& key, std::shared_ptr<DataObject> object) override {
        Hear("reference " + key, key, object);
    }
    void OnDataValueChanged(const std::string& key, std::shared_ptr<DataObject> object) override {
        Hear("value " + key, key, object);
    }

private:
    void Hear(const std::string& line, const std::string& key, const std::shared_ptr<DataObject>& object) {
        m_heard.push_back(line);
        if (object != Get(key))
            m_heard.push_back("another object");
        if (callsBack) {
            callsBack = false;
            PutValue("called back", 1);
            Remove("called back");
            std::erase_if(m_heard, [](const std::string& heard) { return heard.ends_with("called back"); });
            callsBack = true;
        }
        std::thread([this] {
            others.push_back(BeginDataAccess());
            for (const auto& mutex : others)
                mutex->TryAcquire() ? mutex->Release() : void(foundLocked = true);
            others.pop_back();
        }).join();
    }

    std::vector<std::string> m_heard;
};

/// A tree with something of everything.
struct Tree {
    std::shared_ptr<Recorder> root = std::make_shared<Recorder>();
    std::shared_ptr<Recorder> sub = std::make_shared<Recorder>();
    std::shared_ptr<DataContainer> deep = DataContainer::Create();
    std::shared_ptr<ScalarData> scalar = std::make_shared<ScalarData>("S", eSIGNED_INTEGRAL_TYPE);

    Tree() {
        scalar->SetValue(1);
        scalar->EnableDataLocking();
        root->PutValue("n", 1);
        root->Put("sub", std::shared_ptr<DataContainer>(sub));
        sub->Put("deep", deep);
        deep->PutValue("t", "text");
        deep->Put("s", scalar);
        root->others.push_back(sub->BeginDataAccess());
        root->callsBack = true;
        Forget();
    }
    void Forget() {
        root->Take();
        sub->Take();
    }
};

void Rebind(Tree& t, const std::shared_ptr<DataContainer>& next) {
    std::static_pointer_cast<DataContainerWrapper>(t.sub->Get("deep"))->SetData(next);
}

struct Change {
    const char* name;
    std::function<void(Tree&)> make;
    const char* atRoot;
    const char* atSub;
};

const Change changes[] = {
    {"put", [](Tree& t) { t.root->PutValue("x", 1); }, "object x; ", ""},
    {"replace", [](Tree& t) { t.root->PutValue("n", 1.5); }, "object n; ", ""},
    {"same again", [](Tree& t) { t.root->Put("n", t.root->Get("n")); }, "", ""},
    {"remove", [](Tree& t) { t.root->Remove("n"); }, "none n; ", ""},
    {"set value", [](Tree& t) { At<int>(*t.root, "n").SetValue(5); }, "value n; ", ""},
    {"set data", [](Tree& t) { At<int>(*t.root, "n").SetData(nullptr); }, "reference n; ", ""},
    {"switch off", [](Tree& t) { t.root->Get("n")->EnableSerialization(false); }, "value n; ", ""},
    {"deep", [](Tree& t) { At<std::string>(*t.deep, "t").SetValue("longer"); }, "value sub; ", "value deep; "},
    {"scalar", [](Tree& t) { t.scalar->SetValue(-1); }, "value sub; ", "value deep; "},
    {"clear deep", [](Tree& t) { t.deep->Clear(); }, "value sub; ", "value deep; "},
    {"rebind", [](Tree& t) { Rebind(t, DataContainer::Create()); }, "value sub; ", "reference deep; "},
    {"former and new",
     [](Tree& t) {
         const auto next = DataContainer::Create();
         Rebind(t, next);
         t.Forget();
         t.deep->PutValue("x", 1);
         EXPECT_EQ(t.sub->Take(), "");
         next->PutValue("x", 1);
     },
     "value sub; ", "value deep; "},
    {"under two keys",
     [](Tree& t) {
         t.root->Put("m", t.root->Get("n"));
         t.Forget();
         At<int>(*t.root, "n").SetValue(5);
     },
     "value m; value n; ", ""},
    {"what was removed",
     [](Tree& t) {
         const auto object = t.root->Remove("n");
         t.root->Remove("sub");
         t.Forget();
         static_cast<Data<int>&>(*object).SetValue(5);
         t.sub->PutValue("x", 1);
     },
     "", "object x; "},
    {"what was cleared",
     [](Tree& t) {
         const auto walk = t.sub->begin();
         t.sub->Clear();
         t.Forget();
         t.scalar->SetValue(5);
         t.deep->PutValue("x", 1);
     },
     "", ""},
    {"clear", [](Tree& t) { t.root->Clear(); }, "none n; none sub; ", ""},
    {"append", [](Tree& t) { t.root->Append(*t.deep); }, "object s; object t; ", ""},
    {"assign", [](Tree& t) { t.root->Assign(*t.deep); }, "none n; none sub; object s; object t; ", ""},
    {"read", [](Tree& t) { ReadInto(*t.root, Bytes("01000000 'n' 06 05000000 00000000 7FFFFF")); }, "object n; ", ""},
    {"path", [](Tree& t) { t.sub->GetSubData({"a"}, true); }, "value sub; ", "object a; "},
    {"look", [](Tree& t) { Stored(*t.root->Clone()); }, "", ""}};

} // namespace

TEST(Changes, AreHeardAtEveryLevelWithNoLockHeld) {
    for (const Change& change : changes) {
        SCOPED_TRACE(change.name);
        Tree tree;
        change.make(tree);
        EXPECT_EQ(tree.root->Take(), change.atRoot);
        EXPECT_EQ(tree.sub->Take(), change.atSub);
        EXPECT_FALSE(tree.root->foundLocked);
        EXPECT_FALSE(tree.sub->foundLocked);
        tree.root->StopChanges();
        tree.root->PutValue("n", 2);
        EXPECT_EQ(tree.root->Take(), "");
    }
}

TEST(Changes, KeepTheTrackedSizeTrue) {
    for (const Change& change : changes) {
        SCOPED_TRACE(change.name);
        Tree tree;
        tree.root->EnableSizeTracking(true);
        tree.sub->EnableSizeTracking(true);
        Stored(*tree.root); // compares the size with what is written
        change.make(tree);
        for (const auto& next : changes) {
            Stored(*tree.root);
            Stored(*tree.sub);
            if (tree.root->Exists("n") && tree.root->Exists("sub") && tree.root->GetPtr<int>("n") &&
                tree.sub->Exists("deep"))
                next.make(tree);
        }
        Stored(*tree.root);
        tree.root->EnableSizeTracking(false);
        Stored(*tree.root);
    }
}

} // namespace Qor::Tivor::Testing
