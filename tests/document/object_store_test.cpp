/// The ids of objects over any sequence of creating, deleting, saving, failing to save and opening again. What is
/// undone in between has its test beside the downloads that it undoes.
#include "document/object_store.h"

#include "compound/compound_file.h"
#include "support/document_streams.h"
#include "support/fault_file.h"
#include "support/memory_file.h"
#include "support/stream_map.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace quobrix {
namespace {

using namespace test;

extern const PersistentType kPlainType, kOwnerType, kRootType;

/// An object with a number in it; one of the owner class has another that comes and goes with it.
class Numbered final : public PersistentObject {
public:
    explicit Numbered(const PersistentType& type) : type_(type) {}

    const PersistentType& type() const override { return type_; }
    void write(ByteWriter& out) const override {
        out.u32(number);
        out.u32(owned_);
    }
    bool read(ByteReader& in, std::uint8_t) override {
        number = in.u32();
        owned_ = in.u32();
        return in.complete();
    }
    std::uint32_t number = 0;

private:
    void created() override {
        if (&type_ == &kOwnerType)
            owned_ = store()->create(kPlainType).id();
    }
    void deleting() override {
        if (owned_ != kNoObject)
            store()->destroy(owned_);
    }

    const PersistentType& type_;
    ObjectId owned_ = kNoObject;
};

template <const PersistentType& Type>
std::unique_ptr<PersistentObject> make() {
    return std::make_unique<Numbered>(Type);
}
const PersistentType kPlainType{"Plain", false, 1, make<kPlainType>};
const PersistentType kOwnerType{"Owner", false, 1, make<kOwnerType>};
const PersistentType kRootType{"Root", true, 1, make<kRootType>};

const TypeRegistry& types() {
    static const TypeRegistry registry = [] {
        TypeRegistry all;
        all.add(kPlainType);
        all.add(kOwnerType);
        all.add(kRootType);
        return all;
    }();
    return registry;
}

/// What the ids and numbers must be.
struct Model {
    struct Object {
        const PersistentType* type;
        std::uint32_t number = 0;
        ObjectId owned = kNoObject;
    };
    std::map<ObjectId, Object> objects;
    std::vector<ObjectId> free; ///< the next one in front
    ObjectId next = 0;

    ObjectId create(const PersistentType& type) {
        const ObjectId id = free.empty() ? next++ : free.front();
        if (!free.empty())
            free.erase(free.begin());
        objects[id] = {&type};
        if (&type == &kOwnerType) {
            const ObjectId owned = create(kPlainType); // not in the indexing: it inserts
            objects[id].owned = owned;
        }
        return id;
    }
    void destroy(ObjectId id) {
        const Object object = objects.extract(id).mapped();
        free.push_back(id);
        if (object.owned != kNoObject)
            destroy(object.owned);
    }
    std::map<std::string, Bytes> streams() const {
        const auto numbers = [](const std::vector<std::uint32_t>& values, bool counted) {
            ByteWriter out;
            if (counted)
                out.u32(static_cast<std::uint32_t>(values.size()));
            for (const std::uint32_t value : values)
                out.u32(value);
            return out.take();
        };
        std::vector<std::uint32_t> ids;
        ByteWriter singletons;
        std::map<std::string, Bytes> result;
        for (const auto& [id, object] : objects) {
            ids.push_back(id);
            ByteWriter out;
            out.u32(object.type->id());
            out.u8(1);
            out.u32(object.number);
            out.u32(object.owned);
            result[std::to_string(id)] = out.take();
            if (object.type == &kRootType) {
                singletons.u32(1);
                singletons.u32(kRootType.id());
                singletons.u32(id);
            }
        }
        result["Version"] = numbers({3}, false);
        result["Next Available Id"] = numbers({next}, false);
        result["Available Ids"] = numbers(free, true);
        result["Object Ids"] = numbers(ids, true);
        result["Singleton Ids"] = singletons.view().empty() ? numbers({}, true) : singletons.take();
        return result;
    }
};

/// A store over a disk that may fail, beside its model.
class Sequence {
public:
    explicit Sequence(unsigned seed) : disk_(seed), random_(seed) {
        auto file = CompoundFile::create(disk_.file());
        file_ = *std::move(file);
        store_->load(*file_);
    }

    void step() {
        switch (random_() % 16) {
        case 0:
            return save();
        case 1:
            return failToSave();
        case 2:
            return reopen();
        case 3:
            return moveToCopy();
        case 4:
        case 5:
        case 6:
        case 7:
            return destroy();
        case 8:
            return change();
        case 10: {
            // What is taken back, in turn, leaves the ids as they were.
            const ObjectId first = store_->adopt(kPlainType.create()).id();
            const ObjectId second = store_->adopt(kPlainType.create()).id();
            ASSERT_EQ(store_->disown(second)->id(), kNoObject);
            ASSERT_EQ(store_->find(second), nullptr);
            store_->disown(first);
            expectInMemory();
            for (const ObjectId id : {second, first})
                store_->forget(id);
            return expectInMemory();
        }
        case 9:
            if (std::ranges::none_of(model_.objects, [](auto& o) { return o.second.type == &kRootType; }))
                return create(kRootType);
            [[fallthrough]];
        default:
            return create(random_() % 3 == 0 ? kOwnerType : kPlainType);
        }
    }

    void save() {
        ASSERT_TRUE(store_->save(*file_) && file_->commit());
        committed();
        expectOnDisk();
    }
    void reopen() {
        auto file = CompoundFile::open(disk_.file());
        ASSERT_TRUE(file);
        file_ = *std::move(file);
        store_ = std::make_unique<ObjectStore>(types());
        store_->load(*file_);
        // A save that failed at its very end may have happened all the same.
        const auto found = std::ranges::find(mayBeOnDisk_, streams(), &Model::streams);
        ASSERT_NE(found, mayBeOnDisk_.end());
        model_ = *found;
        mayBeOnDisk_ = {model_};
        expectInMemory();
    }

private:
    void committed() {
        store_->saved();
        mayBeOnDisk_ = {model_};
    }
    std::map<std::string, Bytes> streams() const {
        std::map<std::string, Bytes> found;
        for (const std::string& name : file_->names())
            found[name] = *file_->read(name);
        return found;
    }
    void create(const PersistentType& type) {
        const ObjectId expected = model_.create(type);
        ASSERT_EQ(store_->create(type).id(), expected);
        expectInMemory();
    }
    ObjectId any() {
        return std::next(model_.objects.begin(), static_cast<std::ptrdiff_t>(random_() % model_.objects.size()))->first;
    }
    /// An object that no other one owns.
    void destroy() {
        if (model_.objects.empty())
            return;
        const ObjectId id = any();
        if (std::ranges::any_of(model_.objects, [&](auto& o) { return o.second.owned == id; }))
            return;
        model_.destroy(id);
        store_->destroy(id);
        ASSERT_EQ(store_->find(id), nullptr);
        expectInMemory();
    }
    void change() {
        if (model_.objects.empty())
            return;
        const ObjectId id = any();
        const auto number = static_cast<std::uint32_t>(random_());
        model_.objects[id].number = number;
        auto* object = dynamic_cast<Numbered*>(store_->find(id));
        ASSERT_NE(object, nullptr);
        object->number = number;
        object->setModified();
    }
    void failToSave() {
        disk_.failAt = disk_.operations + 1 + random_() % 4;
        disk_.failures = 3;
        const bool done = store_->save(*file_) && file_->commit();
        disk_.failAt = 0;
        if (done) // before the failure
            committed();
        else
            mayBeOnDisk_.push_back(model_);
        expectInMemory();
    }
    /// As Save As does.
    void moveToCopy() {
        const auto bytes = std::make_shared<Bytes>();
        MemoryFile target(bytes);
        ASSERT_TRUE(file_->copyTo(target));
        auto copy = CompoundFile::open(std::make_unique<MemoryFile>(bytes));
        ASSERT_TRUE(copy && store_->save(**copy) && (*copy)->commit());
        disk_.replace(*bytes);
        file_ = *CompoundFile::open(disk_.file());
        store_->attach(*file_);
        committed();
        expectOnDisk();
    }

    void expectOnDisk() {
        ASSERT_TRUE(streams() == model_.streams());
        expectInMemory();
    }
    void expectInMemory() {
        ASSERT_TRUE(store_->damage().empty());
        ASSERT_EQ(store_->nextAvailableId(), model_.next);
        ASSERT_TRUE(std::ranges::equal(store_->freeIds(), model_.free));
        ASSERT_EQ(store_->objectCount(), model_.objects.size());
        for (const auto& [id, object] : model_.objects) {
            PersistentObject* found = store_->find(id);
            ASSERT_NE(found, nullptr) << id;
            ASSERT_EQ(&found->type(), object.type);
            ByteWriter content, expected;
            found->write(content);
            expected.u32(object.number);
            expected.u32(object.owned);
            ASSERT_EQ(content.view(), expected.view()) << id;
        }
    }

    FaultDisk disk_;
    std::mt19937 random_;
    std::unique_ptr<CompoundFile> file_;
    std::unique_ptr<ObjectStore> store_ = std::make_unique<ObjectStore>(types());
    Model model_;
    std::vector<Model> mayBeOnDisk_;
};

class ObjectIds : public testing::TestWithParam<unsigned> {};

TEST_P(ObjectIds, NeverNameTwoObjects) {
    Sequence sequence(GetParam());
    sequence.save();
    for (int step = 0; step < 600; ++step) {
        sequence.step();
        ASSERT_FALSE(HasFailure()) << "step " << step;
    }
    sequence.save();
    sequence.reopen();
}

INSTANTIATE_TEST_SUITE_P(Seeds, ObjectIds, testing::Range(0u, 20u));

TEST(ObjectStore, SpillsEvery3000Objects) {
    class Spills final : public StreamMap {
    public:
        void write(std::string_view name, Bytes content) override {
            written += idOfStream(name) != kNoObject;
            StreamMap::write(name, std::move(content));
        }
        Result<void> spill() override {
            before.push_back(written + 1);
            return {};
        }
        std::size_t written = 0;
        std::vector<std::size_t> before; ///< the how manieth objects
    };
    const std::map<std::size_t, std::vector<std::size_t>> expected = {
        {1, {}}, {2, {2}}, {3001, {2}}, {3002, {2, 3002}}, {6002, {2, 3002, 6002}}};
    for (const auto& [objects, spills] : expected) {
        Spills file;
        ObjectStore store(types());
        for (std::size_t i = 0; i < objects; ++i)
            store.create(kPlainType);
        ASSERT_TRUE(store.save(file));
        EXPECT_EQ(file.before, spills) << objects;
    }
}

TEST(ObjectStore, KeepsStreamsThatTheIndexLacks) {
    StreamMap file;
    file.write("Version", u32s({3}));
    file.write("Next Available Id", u32s({3}));
    file.write("Available Ids", u32s({2, 1, 2}));
    file.write("Object Ids", u32s({0}));
    file.write("Singleton Ids", u32s({0}));
    const Bytes lost = {1, 2, 3};
    for (const char* name : {"1", "3"}) // one of a free id, one beyond the next id
        file.write(name, lost);
    ObjectStore store(types());
    store.load(file);
    for (const ObjectId id : {2, 4, 5})
        EXPECT_EQ(store.create(kPlainType).id(), id);
    ASSERT_TRUE(store.save(file));
    for (const char* name : {"1", "3"})
        EXPECT_EQ(file.streams.at(name), lost);
}

} // namespace
} // namespace quobrix
