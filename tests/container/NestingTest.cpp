#include "Alerts.h"
#include "StoredBytes.h"

#include <Tivor/BinaryDataFile.h>

#include <gtest/gtest.h>

#include <functional>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;
using Containers = std::vector<std::shared_ptr<DataContainer>>;

/// Containers, each below the one before it under "d".
Containers Chain(std::size_t levels) {
    Containers chain{DataContainer::Create()};
    while (chain.size() < levels)
        chain.push_back(chain.back()->GetSubData({"d"}, true));
    return chain;
}

} // namespace

TEST(Nesting, NothingComesToStandInItself) {
    const auto chain = Chain(3);
    const auto& a = chain[0];
    const auto& b = chain[1];
    const auto& c = chain[2];
    c->PutValue("n", 1);
    const auto wrapper = std::make_shared<DataContainerWrapper>();
    c->Put("w", wrapper);
    DataContainer carrier;
    carrier.PutValue("n", 2);
    carrier.PutValue("other", 3);
    carrier.Put("a", a);
    const auto file = std::make_shared<BinaryDataFile>();
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"into itself", [&] { a->Put("x", a); }},
        {"through one level", [&] { b->Put("x", a); }},
        {"through two levels", [&] { c->Put("x", a); }},
        {"in the place of another", [&] { c->Put("n", b); }},
        {"as an object", [&] { c->Put("x", std::make_shared<DataContainerWrapper>(b)); }},
        {"the very wrapper", [&] { c->Put("x", a->Get("d")); }},
        {"in a wrapper that stands there", [&] { wrapper->SetData(a); }},
        {"itself in such a wrapper", [&] { wrapper->SetData(c); }},
        {"nothing in a wrapper", [&] { wrapper->SetData(nullptr); }},
        {"by appending", [&] { c->Append(carrier); }},
        {"by assigning", [&] { c->Assign(carrier); }},
        {"a file", [&] { c->Put("x", file); }}};
    const std::string before = Stored(*a);
    for (const auto& [way, put] : ways) {
        SCOPED_TRACE(way);
        RaisedBy<Core::LogicError>(put);
        EXPECT_EQ(Stored(*a), before);
    }
    c->CloneContents(*a); // a copy of it may
    EXPECT_EQ(Keys(*c), "d ");
}

// What was a circle is none any more, however the link was cut.
TEST(Nesting, FormerParentsMayBeStored) {
    const std::pair<const char*, std::function<void(DataContainer&)>> cuts[] = {
        {"remove", [](DataContainer& a) { a.Remove("d"); }},
        {"replace", [](DataContainer& a) { a.PutValue("d", 1); }},
        {"clear", [](DataContainer& a) { a.Clear(); }},
        {"assign", [](DataContainer& a) { a.Assign(DataContainer()); }},
        {"rebind", [](DataContainer& a) {
             std::static_pointer_cast<DataContainerWrapper>(a.Get("d"))->SetData(DataContainer::Create());
         }}};
    for (const auto& [cut, work] : cuts)
        for (const bool walking : {false, true}) {
            SCOPED_TRACE(cut);
            const auto chain = Chain(3);
            const auto walk = walking ? chain[0]->begin() : chain[0]->end();
            work(*chain[0]);
            EXPECT_NO_THROW(chain[2]->Put("x", chain[0]));
        }
}

TEST(Nesting, EndsAt256Levels) {
    const auto chain = Chain(256);
    const auto refuses = [](const std::function<void()>& work) { RaisedBy<Core::LogicError>(work); };
    refuses([&] { chain.back()->Put("e", DataContainer::Create()); });
    refuses([&] { DataContainer::Create()->Put("d", chain[0]); });
    DataContainer place;
    const auto wrapper = std::make_shared<DataContainerWrapper>();
    place.Put("w", wrapper);
    refuses([&] { wrapper->SetData(chain[0]); });
    const auto half = Chain(128);
    Chain(128).back()->Put("d", half[0]);
    refuses([&] { Chain(129).back()->Put("d", half[0]); });
    chain[200]->Remove("d");
    const auto above = Chain(55);
    above.back()->Put("d", chain[0]); // 55 + 201
    refuses([&] { Chain(2).back()->Put("d", above[0]); });
    above[0]->Remove("d");
    EXPECT_NO_THROW(Chain(255).back()->Put("d", above[0]));
}

} // namespace Qor::Tivor::Testing
