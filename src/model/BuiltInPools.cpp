#include <Tivor/BuiltInDataObjects.h>

#include <vector>

namespace Qor::Tivor {

namespace {

constexpr std::size_t poolsPerClass = 3;

// One group of pools per pooled class, all made at once on first use and kept for ever: objects may outlive main().
class BuiltInPools {
public:
    BuiltInPools() : m_pools(128 * poolsPerClass) {
        for (const TypeFacts& facts : builtInTypeFacts) {
            if (facts.pool == EPool::none)
                continue;
            for (std::size_t what = 0; what < poolsPerClass; ++what)
                if (auto& pool = m_pools[facts.id * poolsPerClass + what]; pool == nullptr)
                    pool = new Core::ObjectPoolBase(64, facts.pool == EPool::large ? 1000 : 500);
        }
    }

    Core::ObjectPoolBase& Get(ETypeID id, EPooled what) {
        return *m_pools[id * poolsPerClass + static_cast<std::size_t>(what)];
    }

private:
    std::vector<Core::ObjectPoolBase*> m_pools;
};

} // namespace

Core::ObjectPoolBase& GetBuiltInPool(ETypeID id, EPooled what) {
    static auto* const pools = new BuiltInPools;
    return pools->Get(id, what);
}

} // namespace Qor::Tivor
