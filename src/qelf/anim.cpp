// An animation: a frame rate and channels of keys, each for one number of one named node.

#include "base/heap.h"
#include "qelf/fields.h"

namespace {

constexpr char id[] = "ANIM";
constexpr int32_t fixed_size = 8;    // what the fixed fields count as
constexpr int32_t channel_size = 16; // what those of a channel count as
constexpr int32_t key_size = 8;

struct channel_type {
    uint32_t value;
    const char* name;
};
constexpr channel_type channel_types[] = {
    {TRANSFORM_TRANSLATION_X, "TRANSFORM_TRANSLATION_X"},
    {TRANSFORM_TRANSLATION_Y, "TRANSFORM_TRANSLATION_Y"},
    {TRANSFORM_TRANSLATION_Z, "TRANSFORM_TRANSLATION_Z"},
    {TRANSFORM_ROTATION_X, "TRANSFORM_ROTATION_X"},
    {TRANSFORM_ROTATION_Y, "TRANSFORM_ROTATION_Y"},
    {TRANSFORM_ROTATION_Z, "TRANSFORM_ROTATION_Z"},
    {TRANSFORM_SCALING_X, "TRANSFORM_SCALING_X"},
    {TRANSFORM_SCALING_Y, "TRANSFORM_SCALING_Y"},
    {TRANSFORM_SCALING_Z, "TRANSFORM_SCALING_Z"},
};

// Makes room for one more element in an array that grows with what arrives, up to `limit`.
template <class T> bool make_room(T*& array, int32_t count, int32_t limit) {
    const bool full = (count & (count - 1)) == 0; // at 0 and at the powers of two
    if (!full) return true;
    const int64_t capacity = count ? int64_t{count} * 2 : 1;
    if (heap_resize(array, static_cast<size_t>(capacity < limit ? capacity : limit))) return true;
    out_of_memory(id);
    return false;
}

int read_keys(FILE* file, QELF_Animation* animation, QELF_AnimationChannel* channel, int32_t count) {
    while (channel->numKeys < count) {
        if (!make_room(channel->keys, channel->numKeys, count)) return 0;
        QELF_AnimationKey& key = channel->keys[channel->numKeys];
        if (!IFF_readULong(file, &key.keyIndex, id, "keyIndex") ||
            !iff_read_floats(file, &key.keyValue, 1, id, "keyValue") ||
            !add_to_size(&animation->chunk, key_size)) {
            return 0;
        }
        ++channel->numKeys;
    }
    return 1;
}

int read_channel(FILE* file, QELF_Animation* animation, QELF_AnimationChannel* channel) {
    int32_t num_keys = 0;
    if (!IFF_readULong(file, &channel->channelType, id, "channelType") ||
        !read_count(file, &num_keys, id, "numKeys") ||
        !read_count(file, &channel->nodeNameLength, id, "nodeNameLength")) {
        return 0;
    }
    channel->nodeName = IFF_readRawChunk(file, "NDNM", channel->nodeNameLength);
    return channel->nodeName && embed(&animation->chunk, &channel->nodeName->chunk) &&
           read_keys(file, animation, channel, num_keys);
}

int read_fields(FILE* file, QELF_Animation* animation) {
    int32_t nchannels = 0;
    if (!iff_read_floats(file, &animation->frameRate, 1, id, "frameRate") ||
        !read_count(file, &nchannels, id, "nchannels") ||
        !read_count(file, &animation->nameLength, id, "nameLength")) {
        return 0;
    }
    animation->name = IFF_readRawChunk(file, "NAME", animation->nameLength);
    if (!animation->name || !embed(&animation->chunk, &animation->name->chunk)) return 0;
    while (animation->nchannels < nchannels) {
        if (!make_room(animation->channels, animation->nchannels, nchannels)) return 0;
        QELF_AnimationChannel* const channel = &animation->channels[animation->nchannels++];
        *channel = {};
        if (!add_to_size(&animation->chunk, channel_size) || !read_channel(file, animation, channel))
            return 0;
    }
    return 1;
}

QELF_AnimationChannel* find_channel(QELF_Animation* animation, int32_t channel) {
    if (channel >= 0 && channel < animation->nchannels) return &animation->channels[channel];
    refuse(id, "no such channel");
    return nullptr;
}

void print_channel(const QELF_AnimationChannel* channel, int level) {
    IFF_printIndent(stdout, level, "nodeNamelength = %d;\n", channel->nodeNameLength);
    IFF_printIndent(stdout, level, "nodeName = \n");
    print_text(channel->nodeName, level + 1);
    for (const auto& type : channel_types) {
        if (type.value == channel->channelType)
            IFF_printIndent(stdout, level, "channelType = %s\n", type.name);
    }
    IFF_printIndent(stdout, level, "numKeys = %d;\n", channel->numKeys);
    IFF_printIndent(stdout, level, "keys = \n");
    IFF_printIndent(stdout, level, "[\n");
    for (int32_t i = 0; i < channel->numKeys; ++i) {
        const QELF_AnimationKey& key = channel->keys[i];
        IFF_printIndent(stdout, level + 1, "{\n");
        IFF_printIndent(stdout, level + 2, "<%u, %.4f>\n", key.keyIndex, double{key.keyValue});
        IFF_printIndent(stdout, level + 1, "}\n");
    }
    IFF_printIndent(stdout, level, "]\n");
}

bool same_channel(const QELF_AnimationChannel& a, const QELF_AnimationChannel& b) {
    if (a.channelType != b.channelType || a.numKeys != b.numKeys || a.nodeNameLength != b.nodeNameLength ||
        !same_text(a.nodeName, b.nodeName)) {
        return false;
    }
    for (int32_t i = 0; i < a.numKeys; ++i) {
        if (a.keys[i].keyIndex != b.keys[i].keyIndex) return false;
        if (!same_bits(&a.keys[i].keyValue, &b.keys[i].keyValue, 1)) return false;
    }
    return true;
}

} // namespace

QELF_Animation* QELF_createAnimation(int32_t nchannels, float frameRate) {
    if (nchannels < 0) {
        refuse(id, "negative number of channels");
        return nullptr;
    }
    heap_ptr<QELF_Animation> animation{create_record<QELF_Animation>(id, fixed_size)};
    if (!animation || !add_to_size(&animation->chunk, int64_t{channel_size} * nchannels)) return nullptr;
    if (nchannels > 0) {
        animation->channels = static_cast<QELF_AnimationChannel*>(
            calloc(static_cast<size_t>(nchannels), sizeof(QELF_AnimationChannel)));
        if (!animation->channels) {
            out_of_memory(id);
            return nullptr;
        }
    }
    animation->nchannels = nchannels;
    animation->frameRate = frameRate;
    return animation.release();
}

int QELF_setAnimationName(QELF_Animation* animation, const char* name) {
    return set_text(&animation->chunk, &animation->name, &animation->nameLength, "NAME", name);
}

int QELF_setAnimationChannelNodeNameAndType(QELF_Animation* animation, int32_t channel, const char* nodeName,
                                            uint32_t channelType) {
    QELF_AnimationChannel* const c = find_channel(animation, channel);
    if (!c || !set_text(&animation->chunk, &c->nodeName, &c->nodeNameLength, "NDNM", nodeName)) return 0;
    c->channelType = channelType;
    return 1;
}

int QELF_allocateAnimationChannelKeyBuffer(QELF_Animation* animation, int32_t channel, int32_t numKeys) {
    QELF_AnimationChannel* const c = find_channel(animation, channel);
    if (!c) return 0;
    if (numKeys < 0) return refuse(id, "negative number of keys");
    heap_ptr<QELF_AnimationKey> keys{
        static_cast<QELF_AnimationKey*>(calloc(static_cast<size_t>(numKeys) + 1, sizeof(QELF_AnimationKey)))};
    if (!keys) {
        out_of_memory(id);
        return 0;
    }
    if (!add_to_size(&animation->chunk, int64_t{key_size} * (int64_t{numKeys} - c->numKeys))) return 0;
    free(c->keys);
    c->keys = keys.release();
    c->numKeys = numKeys;
    return 1;
}

QELF_Animation* QELF_readAnimation(FILE* file, int32_t) {
    QELF_Animation* const animation = QELF_createAnimation(0, 0.0f);
    if (!animation || read_fields(file, animation)) return animation;
    QELF_freeAnimation(animation);
    free(animation);
    return nullptr;
}

int complete_animation(QELF_Animation* animation) {
    IFF_Chunk* const chunk = &animation->chunk;
    chunk->chunkSize = fixed_size;
    if (!complete_text(chunk, &animation->name, &animation->nameLength, "NAME")) return 0;
    for (int32_t i = 0; i < animation->nchannels; ++i) {
        QELF_AnimationChannel& c = animation->channels[i];
        if (!add_to_size(chunk, channel_size + int64_t{key_size} * c.numKeys) ||
            !complete_text(chunk, &c.nodeName, &c.nodeNameLength, "NDNM")) {
            return 0;
        }
    }
    return 1;
}

int QELF_writeAnimation(FILE* file, const QELF_Animation* animation) {
    if (!iff_write_floats(file, &animation->frameRate, 1, id, "frameRate") ||
        !IFF_writeLong(file, animation->nchannels, id, "nchannels") ||
        !IFF_writeLong(file, animation->nameLength, id, "nameLength") || !write_text(file, animation->name)) {
        return 0;
    }
    for (int32_t i = 0; i < animation->nchannels; ++i) {
        const QELF_AnimationChannel& channel = animation->channels[i];
        if (!IFF_writeULong(file, channel.channelType, id, "channelType") ||
            !IFF_writeLong(file, channel.numKeys, id, "numKeys") ||
            !IFF_writeLong(file, channel.nodeNameLength, id, "nodeNameLength") ||
            !write_text(file, channel.nodeName)) {
            return 0;
        }
        for (int32_t k = 0; k < channel.numKeys; ++k) {
            if (!IFF_writeULong(file, channel.keys[k].keyIndex, id, "keyIndex") ||
                !iff_write_floats(file, &channel.keys[k].keyValue, 1, id, "keyValue")) {
                return 0;
            }
        }
    }
    return 1;
}

int QELF_checkAnimation(const QELF_Animation*) {
    return 1;
}

void QELF_freeAnimation(QELF_Animation* animation) {
    for (int32_t i = 0; i < animation->nchannels; ++i) {
        free_text(&animation->channels[i].nodeName);
        free(animation->channels[i].keys);
    }
    animation->nchannels = 0;
    heap_clear(animation->channels);
    free_text(&animation->name);
}

void QELF_printAnimation(const QELF_Animation* animation, int indentLevel) {
    IFF_printIndent(stdout, indentLevel, "namelength = %d;\n", animation->nameLength);
    IFF_printIndent(stdout, indentLevel, "name = \n");
    print_text(animation->name, indentLevel + 1);
    IFF_printIndent(stdout, indentLevel, "frameRate = %.4f\n", double{animation->frameRate});
    IFF_printIndent(stdout, indentLevel, "nchannels = %d;\n", animation->nchannels);
    IFF_printIndent(stdout, indentLevel, "channels = \n");
    IFF_printIndent(stdout, indentLevel, "[\n");
    for (int32_t i = 0; i < animation->nchannels; ++i) {
        IFF_printIndent(stdout, indentLevel + 1, "{\n");
        print_channel(&animation->channels[i], indentLevel + 2);
        IFF_printIndent(stdout, indentLevel + 1, "}\n");
    }
    IFF_printIndent(stdout, indentLevel, "]\n");
}

int QELF_compareAnimation(const QELF_Animation* a, const QELF_Animation* b) {
    if (!same_bits(&a->frameRate, &b->frameRate, 1) || a->nchannels != b->nchannels ||
        a->nameLength != b->nameLength || !same_text(a->name, b->name)) {
        return 0;
    }
    for (int32_t i = 0; i < a->nchannels; ++i) {
        if (!same_channel(a->channels[i], b->channels[i])) return 0;
    }
    return 1;
}
