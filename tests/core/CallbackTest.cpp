#include <QorCore/Callback.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Qor::Core;

int Double(int number) {
    return 2 * number;
}
int Triple(int number) {
    return 3 * number;
}

struct Base {
    int Add(int number) { return sum += number; }
    int sum = 0;
};
struct Target : Base {
    int Subtract(int number) { return sum -= number; }
    int Compare(int number) const { return sum - number; }
};

TEST(Callback, EqualityIsThatOfTargetAndMethod) {
    Target target;
    Target other;
    const auto shared = std::make_shared<Target>();
    const auto lambda = [](int number) { return number; };
    using Callback = std::shared_ptr<CallbackRetArg<int, int>>;
    // Rows of one line are equal to each other and to nothing else.
    const std::vector<std::vector<Callback>> classes = {
        {MakeCallback(Double), MakeCallback(Double)},
        {MakeCallback(Triple)},
        {MakeCallback(target, &Target::Add), MakeCallback<Base>(target, &Base::Add)},
        {MakeCallback(target, &Target::Subtract), MakeCallback(target, &Target::Subtract)},
        {MakeCallback(target, &Target::Compare), MakeCallback(target, &Target::Compare)},
        {MakeCallback(other, &Target::Subtract)},
        {MakeCallback(std::weak_ptr(shared), &Target::Subtract),
         MakeCallback(std::weak_ptr(shared), &Target::Subtract)},
        {MakeCallback(std::weak_ptr(shared), &Target::Add)},
        {MakeCallback(*shared, &Target::Subtract)},
        {MakeCallback<int, int>(lambda)},
        {MakeCallback<int, int>(lambda)},
    };
    for (const auto& one : classes)
        for (const auto& another : classes)
            for (const Callback& left : one)
                for (const Callback& right : another)
                    EXPECT_EQ(left->IsEqual(*right), &one == &another);
}

TEST(Callback, CallsItsTargetAsLongAsThereIsOne) {
    auto target = std::make_shared<Target>();
    const auto add = MakeCallback(*target, &Target::Add);
    const auto subtract = MakeCallback(std::weak_ptr(target), &Target::Subtract);
    EXPECT_EQ(add->Execute(5), 5);
    EXPECT_EQ(subtract->Execute(2), 3);
    EXPECT_EQ(MakeCallback(*target, &Target::Compare)->Execute(1), 2);
    EXPECT_EQ(MakeCallback(Triple)->Execute(4), 12);
    EXPECT_TRUE(subtract->IsCallable());
    target.reset();
    EXPECT_FALSE(subtract->IsCallable());
    EXPECT_TRUE(subtract->IsEqual(*subtract));
    EXPECT_THROW(subtract->Execute(1), NullPointerError);

    // By reference, with no result.
    const std::shared_ptr<CallbackArg<std::string&>> append =
        MakeCallback<void, std::string&>([count = 0](std::string& text) mutable { text += std::to_string(++count); });
    std::string text;
    append->Execute(text);
    append->Execute(text);
    EXPECT_EQ(text, "12");
}

} // namespace
