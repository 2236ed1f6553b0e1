// Copying entities from one database into another: a drawing file inserted as a block.
#include <unordered_map>

#include "cad/Expansion.h"
#include "cad/NumberText.h"
#include "cad/Operations.h"

namespace cad {

namespace {

class Transfer {
public:
    Transfer(Database& target, const Database& source) : to_(target), from_(source) {}

    // Copies the live entities of a source block into a target block.
    void CopyBlock(Handle sourceBlock, Handle targetBlock, int depth) {
        const BlockRecord* block = from_.Block(sourceBlock);
        if (block == nullptr || depth > kMaxBlockNesting) {
            return;
        }
        for (Handle h : block->entities) {
            const auto* e = from_.Get<Entity>(h);
            if (e != nullptr && !e->erased) {
                CopyEntity(*e, targetBlock, depth);
            }
        }
    }

    // Links between copied entities are kept; links to anything else are cut.
    void RemapLinks() {
        for (Handle h : copies_) {
            auto* e = to_.Get<Entity>(h);
            for (auto& g : e->xdata) {
                for (auto& item : g.items) {
                    if (item.code != 1005) {
                        continue;
                    }
                    auto it = handleMap_.find(item.AsHandle());
                    item.value = it != handleMap_.end() ? FormatHandle(it->second) : "0";
                }
            }
        }
    }

private:
    Handle CopyEntity(const Entity& e, Handle owner, int depth, bool append = true) {
        auto copy = std::unique_ptr<Entity>(static_cast<Entity*>(e.Clone().release()));
        copy->handle = kNullHandle;
        copy->layer = Layer(e.layer);
        for (auto& g : copy->xdata) {
            g.app = App(g.app);
        }
        if (auto* t = Database::Cast<Text>(copy.get())) {
            t->style = Style(t->style);
        } else if (auto* m = Database::Cast<MText>(copy.get())) {
            m->style = Style(m->style);
        } else if (auto* u = Database::Cast<UnknownEntity>(copy.get())) {
            u->followers.clear();
            for (const auto& tag : u->tags) {
                if (tag.code == 8) {
                    to_.AddLayer(tag.value);  // the layer it names must exist here too
                }
            }
        }
        auto* ref = Database::Cast<BlockReference>(copy.get());
        if (ref != nullptr) {
            ref->attributes.clear();
            ref->seqend = kNullHandle;
            ref->block = Block(ref->block, depth);
        }
        Handle h;
        if (append) {
            h = to_.Append(std::move(copy), owner);
        } else {
            copy->owner = owner;
            h = to_.Add(std::move(copy));
        }
        handleMap_[e.handle] = h;
        copies_.push_back(h);
        CopyDependents(e, h, depth);
        return h;
    }

    void CopyDependents(const Entity& e, Handle h, int depth) {
        if (const auto* srcRef = Database::Cast<BlockReference>(&e)) {
            for (Handle a : srcRef->attributes) {
                const auto* att = from_.Get<Attribute>(a);
                if (att == nullptr || att->erased) {
                    continue;
                }
                auto c =
                    std::unique_ptr<Attribute>(static_cast<Attribute*>(att->Clone().release()));
                c->layer = Layer(att->layer);
                c->style = Style(att->style);
                for (auto& g : c->xdata) {
                    g.app = App(g.app);
                }
                const Handle ch = to_.AddAttribute(h, std::move(c));
                handleMap_[a] = ch;
                copies_.push_back(ch);
            }
        } else if (const auto* srcUnknown = Database::Cast<UnknownEntity>(&e)) {
            for (Handle f : srcUnknown->followers) {
                const auto* fe = from_.Get<Entity>(f);
                if (fe != nullptr && !fe->erased) {
                    const Handle ch = CopyEntity(*fe, h, depth, false);
                    to_.Get<UnknownEntity>(h)->followers.push_back(ch);
                }
            }
        }
    }

    // Records are matched by name once per source record: a drawing's entities share a few.
    Handle App(Handle sourceApp) {
        return Matched(apps_, sourceApp, [&] { return to_.RegisterApp(from_.AppName(sourceApp)); });
    }
    Handle Layer(Handle sourceLayer) {
        return Matched(layers_, sourceLayer, [&] { return MatchLayer(sourceLayer); });
    }
    Handle Style(Handle sourceStyle) {
        return Matched(styles_, sourceStyle, [&] { return MatchStyle(sourceStyle); });
    }

    template <class Match>
    static Handle Matched(std::unordered_map<Handle, Handle>& seen, Handle source, Match match) {
        auto [it, fresh] = seen.try_emplace(source, kNullHandle);
        if (fresh) {
            it->second = match();
        }
        return it->second;
    }

    Handle MatchLayer(Handle sourceLayer) {
        const LayerRecord* l = from_.Layer(sourceLayer);
        if (l == nullptr) {
            return to_.FindLayer("0");
        }
        Handle h = to_.FindLayer(l->name);
        if (h == kNullHandle) {
            h = to_.AddLayer(l->name, l->color);
            to_.Layer(h)->flags = l->flags;
        }
        return h;
    }

    Handle MatchStyle(Handle sourceStyle) {
        const TextStyleRecord* s = from_.TextStyle(sourceStyle);
        if (s == nullptr) {
            return to_.CurrentTextStyle();
        }
        Handle h = to_.FindTextStyle(s->name);
        if (h == kNullHandle) {
            h = to_.AddTextStyle(s->name, s->font, s->bigFont);
            TextStyleRecord* t = to_.TextStyle(h);
            t->widthFactor = s->widthFactor;
            t->fixedHeight = s->fixedHeight;
            t->oblique = s->oblique;
        }
        return h;
    }

    // A block a copied reference names: the target's block of that name when it has one,
    // else a copy of the source's.
    Handle Block(Handle sourceBlock, int depth) {
        const BlockRecord* b = from_.Block(sourceBlock);
        if (b == nullptr) {
            return kNullHandle;
        }
        if (Handle h = to_.FindBlock(b->name); h != kNullHandle) {
            return h;
        }
        const Handle h = to_.DefineBlock(b->name, b->basePoint);
        CopyBlock(sourceBlock, h, depth + 1);
        return h;
    }

    Database& to_;
    const Database& from_;
    std::unordered_map<Handle, Handle> handleMap_;
    std::unordered_map<Handle, Handle> apps_, layers_, styles_;
    std::vector<Handle> copies_;
};

}  // namespace

Handle InsertAsBlock(Database& target, const Database& source, const std::string& blockName,
                     std::string* error) {
    if (blockName.empty() || blockName.front() == '*') {
        return kNullHandle;  // the spaces are not blocks to redefine
    }
    // What the copy will draw as is bounded here, once, where the source comes in.
    std::string why;
    if (!CheckExpansion(source, source.ModelSpace(), why)) {
        if (error != nullptr) {
            *error = why;
        }
        return kNullHandle;
    }
    Handle block = target.FindBlock(blockName);
    if (block == kNullHandle) {
        block = target.DefineBlock(blockName, source.InsBase());
    } else {
        target.ClearBlock(block);
        target.Block(block)->basePoint = source.InsBase();
    }
    Transfer transfer(target, source);
    transfer.CopyBlock(source.ModelSpace(), block, 0);
    transfer.RemapLinks();
    return block;
}

}  // namespace cad
