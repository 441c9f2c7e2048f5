#include "repair/document_check.h"

#include "texts/text.h"

#include <algorithm>
#include <set>
#include <unordered_map>

namespace quobrix {
namespace {

class Checker {
public:
    explicit Checker(ObjectStore& store) : store_(store) {}

    DocumentCheck run() {
        result_.objects = store_.objectCount();
        loadEverything();
        followReferences();
        checkSingletons();
        for (const Damage& damage : store_.damage())
            if (ofLaterVersion(damage))
                result_.notes.push_back({damage.id, {}, text(TextId::ClassOfLaterVersionKept)});
            else
                result_.damages.push_back({damage.id, logOf(damage), damage.what});
        result_.damages.insert(result_.damages.end(), contradictions_.begin(), contradictions_.end());
        checkStreams();
        if (const std::optional<ShownText> doubt = store_.doubt(); doubt && result_.damages.empty())
            result_.damages.push_back({kNoObject, {}, *doubt});
        noteLeftovers();
        countDamaged();
        return std::move(result_);
    }

private:
    void loadEverything() {
        for (const ObjectId id : store_.objectIds())
            store_.find(id);
        // A table finds out about its columns' lengths and classes when it is asked for them.
        for (PersistentObject* object : store_.loadedObjects())
            if (auto* table = dynamic_cast<Table*>(object)) {
                table->rowCount();
                table->unreadableColumns();
            }
    }

    void followReferences() {
        for (const PersistentObject* object : store_.loadedObjects())
            for (const Reference& reference : object->references())
                follow(*object, reference);
    }

    void follow(const PersistentObject& owner, const Reference& reference) {
        const auto contradiction = [&](ShownText what) {
            contradictions_.push_back({owner.id(), text(logOfClass(owner.type().name)), std::move(what)});
        };
        // A table itself tells whether its columns are of their class and belong to it alone.
        const bool isTable = dynamic_cast<const Table*>(&owner) != nullptr && store_.types().find(reference.typeId);
        const auto [known, first] = owners_.emplace(reference.id, Owner{&owner, reference.typeId});
        if (!first && !isTable)
            return contradiction(
                text(TextId::BothReferToObject, owner.type().name, known->second.object->type().name, reference.id));
        if (store_.unreadable(reference.id))
            return; // told as damage of its own
        const PersistentObject* object = store_.find(reference.id);
        if (!object)
            return store_.noteBadReference(reference.id, reference.typeId,
                                           text(TextId::RefersToMissingObject, owner.type().name, reference.id));
        if (object->type().id() != reference.typeId && !isTable)
            contradiction(text(TextId::RefersToOtherClass, owner.type().name, reference.id, object->type().name));
    }

    void checkSingletons() {
        const auto& singletons = store_.singletonIds();
        for (const auto& [typeId, id] : singletons) {
            const PersistentType* type = store_.types().find(typeId);
            const PersistentObject* object = store_.find(id);
            if (type && object && object->type().id() != typeId)
                store_.noteBadReference(id, typeId, text(TextId::ClassStandsForOther, object->type().name, type->name));
        }
        for (const PersistentObject* object : store_.loadedObjects()) {
            const PersistentType& type = object->type();
            const auto known = singletons.find(type.id());
            if (type.singleton && (known == singletons.end() || known->second != object->id()))
                contradictions_.push_back(
                    {object->id(), text(logOfClass(type.name)), text(TextId::NotNamedByIndex, type.name)});
        }
    }

    void checkStreams() {
        for (const std::string& name : store_.strayStreams())
            result_.damages.push_back({kNoObject, {}, text(TextId::TheStreamBelongsToNoObject, name)});
        for (const std::string& name : store_.garbledStreams())
            result_.damages.push_back({kNoObject, {}, text(TextId::IsNoNameOfAStream, name)});
    }

    void countDamaged() {
        const std::vector<ObjectId> known = store_.objectIds();
        std::set<ObjectId> damaged;
        for (const CheckFinding& finding : result_.damages)
            if (std::ranges::binary_search(known, finding.id))
                damaged.insert(finding.id);
        result_.damagedObjects = damaged.size();
    }

    void noteLeftovers() {
        for (const PersistentObject* object : store_.loadedObjects())
            if (!object->type().singleton && !owners_.contains(object->id()))
                result_.notes.push_back({object->id(), text(logOfClass(object->type().name)),
                                         text(TextId::ObjectOfNobody, object->type().name)});
    }

    /// It has a class that is not known, and nothing expects another of it.
    bool ofLaterVersion(const Damage& damage) const {
        if (!store_.unreadable(damage.id) || damage.typeId == 0 || store_.types().find(damage.typeId))
            return false;
        for (const auto& [typeId, id] : store_.singletonIds())
            if (id == damage.id && typeId != damage.typeId)
                return false;
        const auto owner = owners_.find(damage.id);
        return owner == owners_.end() || owner->second.expected == damage.typeId;
    }

    /// By the class of the damaged object; where that is not known, of what refers to it.
    ShownText logOf(const Damage& damage) {
        if (damage.id == kNoObject)
            return {};
        if (const PersistentType* type = store_.types().find(damage.typeId))
            return text(logOfClass(type->name));
        if (ownerClasses_.empty())
            ownerClasses_ = store_.owners();
        const auto owner = ownerClasses_.find(damage.id);
        return owner == ownerClasses_.end() ? ShownText() : text(logOfClass(owner->second->name));
    }

    struct Owner {
        const PersistentObject* object;
        std::uint32_t expected; ///< type id
    };

    ObjectStore& store_;
    DocumentCheck result_;
    std::vector<CheckFinding> contradictions_;
    std::unordered_map<ObjectId, Owner> owners_;
    std::unordered_map<ObjectId, const PersistentType*> ownerClasses_; // of what is damaged, too; made when needed
};

} // namespace

DocumentCheck checkDocument(ObjectStore& store) { return Checker(store).run(); }

DocumentCheck checkDocument(TQuobrixDocument& document) {
    DocumentCheck check = checkDocument(document.store());
    if (document.outdated())
        return {check.objects, 0, {{kNoObject, {}, text(TextId::AnotherProgramHasChangedTheFileMeanwhile)}}, {}};
    if (const std::optional<ShownText> doubt = document.doubt(); doubt && check.sound())
        check.damages.push_back({kNoObject, {}, *doubt});
    if (document.lacksOwnStream())
        check.damages.push_back({kNoObject, {}, text(TextId::TheStreamIsMissing, kDocumentStream)});
    return check;
}

} // namespace quobrix
