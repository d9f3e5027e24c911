// A property that is set again and again, against a field that tells functions.
#include "Comparison.h"

#include <Tivor/PropertyContainer.h>

#include <functional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Bench {

namespace {

using namespace Qor::Tivor;

constexpr int numSets = 100'000;

class Instrument final : public PropertyContainer {
public:
    explicit Instrument(int numProperties) : PropertyContainer(false) {
        for (int i = 0; i < numProperties; ++i)
            AddProperty("Property/" + std::to_string(i), MakeData(0), eREADABLE_WRITABLE);
    }
};

class Listener final : public PropertyChangeListener {
public:
    ~Listener() override { Unregister(); }
    void PropertyChanged(const PropertyChangeEvent&) override { ++count; }

    int count = 0;
};

struct Field {
    int value = 0;
    std::vector<std::function<void(int)>> listeners;
};

Run SetField(int numListeners) {
    auto field = std::make_shared<Field>();
    auto count = std::make_shared<int>(0);
    for (int i = 0; i < numListeners; ++i)
        field->listeners.emplace_back([count](int) { ++*count; });
    return [field](Stopwatch& watch) {
        watch.Start();
        for (int i = 0; i < numSets; ++i) {
            field->value = i;
            for (const auto& listener : field->listeners)
                listener(i);
            Keep(field->value);
        }
        watch.Stop();
    };
}

Run SetInstrument(int numProperties, int numListeners) {
    auto instrument = std::make_shared<Instrument>(numProperties);
    auto listeners = std::make_shared<std::vector<Listener>>(static_cast<std::size_t>(numListeners));
    for (Listener& listener : *listeners)
        instrument->AddPropertyChangeListener(listener);
    const std::string name = "Property/" + std::to_string(numProperties / 2);
    return [=](Stopwatch& watch) {
        watch.Start();
        for (int i = 0; i < numSets; ++i)
            instrument->SetProperty(name, MakeData(i));
        watch.Stop();
        for (Listener& listener : *listeners)
            if (std::exchange(listener.count, 0) < numSets - 1)
                throw std::runtime_error("a listener has not heard of a change");
    };
}

} // namespace

} // namespace Bench

void Bench::RegisterRows() {
    const auto row = [](const std::string& name, double goal, int numProperties, int numListeners, int limit) {
        Register(name, 31, [=](benchmark::State& state) {
            Compare(state, goal, SetField(limit), SetInstrument(numProperties, numListeners), numSets);
        });
    };
    row("W5 one listener", 100, 10, 1, 1);
    row("W5 ten listeners", 12, 10, 10, 10);
    row("no listener, 10 properties", 0, 10, 0, 1);
    row("no listener, 1000 properties", 0, 1000, 0, 1);
    row("no listener, 10000 properties", 0, 10'000, 0, 1);
}
