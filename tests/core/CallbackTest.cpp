#include <QorCore/Callback.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Qor::Core;

struct Base {
    int Add(int number) { return sum += number; }
    int sum = 0;
};
struct Target : Base {
    int Subtract(int number) { return sum -= number; }
    int Compare(int number) const { return sum - number; }
    static int Double(int number) { return 2 * number; }
    static int Triple(int number) { return 3 * number; }
};

TEST(Callback, EqualityIsThatOfTargetAndMethod) {
    Target target;
    Target other;
    const auto shared = std::make_shared<Target>();
    const std::weak_ptr weak(shared);
    const auto lambda = [](int number) { return number; };
    using Callback = std::shared_ptr<CallbackRetArg<int, int>>;
    // Those of one row are equal to each other and to nothing else.
    const std::vector<std::vector<Callback>> rows = {
        {MakeCallback(Target::Double), MakeCallback(Target::Double)},
        {MakeCallback(Target::Triple)},
        {MakeCallback(target, &Target::Add), MakeCallback<Base>(target, &Base::Add)},
        {MakeCallback(target, &Target::Subtract), MakeCallback(target, &Target::Subtract)},
        {MakeCallback(target, &Target::Compare), MakeCallback(target, &Target::Compare)},
        {MakeCallback(other, &Target::Subtract)},
        {MakeCallback(weak, &Target::Subtract), MakeCallback(weak, &Target::Subtract)},
        {MakeCallback(weak, &Target::Add)},
        {MakeCallback(*shared, &Target::Subtract)},
        {MakeCallback<int, int>(lambda)},
        {MakeCallback<int, int>(lambda)}};
    for (const auto& one : rows)
        for (const auto& another : rows)
            for (const Callback& left : one)
                for (const Callback& right : another)
                    EXPECT_EQ(left->IsEqual(*right), &one == &another);
}

TEST(Callback, CallsItsTargetAsLongAsThereIsOne) {
    auto target = std::make_shared<Target>();
    const auto subtract = MakeCallback(std::weak_ptr(target), &Target::Subtract);
    EXPECT_EQ(MakeCallback(*target, &Target::Add)->Execute(5), 5);
    EXPECT_EQ(subtract->Execute(2), 3);
    EXPECT_EQ(MakeCallback(*target, &Target::Compare)->Execute(1), 2);
    EXPECT_EQ(MakeCallback(Target::Triple)->Execute(4), 12);
    std::string text;
    MakeCallback<void, std::string&>([](std::string& written) { written = "by reference"; })->Execute(text);
    EXPECT_EQ(text, "by reference");
    EXPECT_TRUE(subtract->IsCallable());
    target.reset();
    EXPECT_FALSE(subtract->IsCallable());
    EXPECT_TRUE(subtract->IsEqual(*subtract));
    EXPECT_THROW(subtract->Execute(1), NullPointerError);
}

} // namespace
