#include "GdkEventTranslator.h"

#include <array>
#include <utility>

namespace velmora {

namespace {

struct KeyMapping {
    std::uint16_t hardware;
    std::uint16_t ours;
};

// X11 key codes are evdev codes plus 8; they name keys by place, not by
// the letter the layout prints on them.
constexpr std::array<KeyMapping, 10> keyTable = {{
    {25, KeyCode::w},
    {38, KeyCode::a},
    {39, KeyCode::s},
    {40, KeyCode::d},
    {41, KeyCode::f},
    {9, KeyCode::escape},
    {113, KeyCode::leftArrow},
    {114, KeyCode::rightArrow},
    {116, KeyCode::downArrow},
    {111, KeyCode::upArrow},
}};

// The modifier bit a modifier key itself stands for; 0 for other keys.
std::uint64_t modifierOfKey(guint keyval)
{
    switch (keyval) {
    case GDK_KEY_Shift_L:
    case GDK_KEY_Shift_R:
        return ModifierFlag::shift;
    case GDK_KEY_Control_L:
    case GDK_KEY_Control_R:
        return ModifierFlag::control;
    case GDK_KEY_Alt_L:
    case GDK_KEY_Alt_R:
    case GDK_KEY_Meta_L:
    case GDK_KEY_Meta_R:
        return ModifierFlag::option;
    case GDK_KEY_Super_L:
    case GDK_KEY_Super_R:
    case GDK_KEY_Hyper_L:
    case GDK_KEY_Hyper_R:
        return ModifierFlag::command;
    case GDK_KEY_Caps_Lock:
        return ModifierFlag::capsLock;
    default:
        return 0;
    }
}

// Wheels report steps; touchpads, trackpoints and touch screens report
// distances. Without a device to ask, smooth deltas are taken as distances.
bool smoothDeltasAreLines(const GdkEvent& event)
{
    GdkDevice* device = gdk_event_get_source_device(&event);
    return device != nullptr && gdk_device_get_source(device) == GDK_SOURCE_MOUSE;
}

} // namespace

GdkEventTranslator::GdkEventTranslator(TargetLookup lookup)
    : m_lookup(std::move(lookup))
{
}

std::uint16_t GdkEventTranslator::keyCode(std::uint16_t hardwareKeycode)
{
    for (const KeyMapping& mapping : keyTable) {
        if (mapping.hardware == hardwareKeycode)
            return mapping.ours;
    }
    return static_cast<std::uint16_t>(otherKeyOffset + hardwareKeycode);
}

std::uint16_t GdkEventTranslator::keyCode(std::uint16_t hardwareKeycode, guint keyval)
{
    switch (keyval) {
    case GDK_KEY_Escape:
        return KeyCode::escape;
    case GDK_KEY_Left:
        return KeyCode::leftArrow;
    case GDK_KEY_Right:
        return KeyCode::rightArrow;
    case GDK_KEY_Down:
        return KeyCode::downArrow;
    case GDK_KEY_Up:
        return KeyCode::upArrow;
    default:
        break;
    }
    const std::uint16_t byPlace = keyCode(hardwareKeycode);
    const bool symbolKey = byPlace == KeyCode::escape || byPlace == KeyCode::leftArrow || byPlace == KeyCode::rightArrow
        || byPlace == KeyCode::downArrow || byPlace == KeyCode::upArrow;
    const bool outside = byPlace >= otherKeyOffset;
    if (!symbolKey && !outside)
        return byPlace;
    switch (gdk_keyval_to_lower(keyval)) {
    // The shortcut's letter, wherever the keymap puts it.
    case GDK_KEY_f:
        return KeyCode::f;
    case GDK_KEY_w:
        return symbolKey ? KeyCode::w : byPlace;
    case GDK_KEY_a:
        return symbolKey ? KeyCode::a : byPlace;
    case GDK_KEY_s:
        return symbolKey ? KeyCode::s : byPlace;
    case GDK_KEY_d:
        return symbolKey ? KeyCode::d : byPlace;
    default:
        return static_cast<std::uint16_t>(otherKeyOffset + hardwareKeycode);
    }
}

std::uint64_t GdkEventTranslator::modifierFlags(unsigned state)
{
    std::uint64_t flags = 0;
    if ((state & GDK_SHIFT_MASK) != 0)
        flags |= ModifierFlag::shift;
    if ((state & GDK_LOCK_MASK) != 0)
        flags |= ModifierFlag::capsLock;
    if ((state & GDK_CONTROL_MASK) != 0)
        flags |= ModifierFlag::control;
    if ((state & (GDK_MOD1_MASK | GDK_META_MASK)) != 0)
        flags |= ModifierFlag::option;
    if ((state & (GDK_SUPER_MASK | GDK_MOD4_MASK | GDK_HYPER_MASK)) != 0)
        flags |= ModifierFlag::command;
    return flags;
}

std::optional<InputEvent> GdkEventTranslator::translate(const GdkEvent& event)
{
    switch (event.type) {
    case GDK_KEY_PRESS:
    case GDK_KEY_RELEASE:
        return translateKey(event.key);
    case GDK_BUTTON_PRESS:
    case GDK_BUTTON_RELEASE: {
        const GdkEventButton& button = event.button;
        const bool press = event.type == GDK_BUTTON_PRESS;
        InputEvent translated;
        if (button.button == GDK_BUTTON_PRIMARY)
            translated.type = press ? InputEventType::leftMouseDown : InputEventType::leftMouseUp;
        else if (button.button == GDK_BUTTON_SECONDARY)
            translated.type = press ? InputEventType::rightMouseDown : InputEventType::rightMouseUp;
        else
            return std::nullopt;
        translated.modifierFlags = modifierFlags(button.state);
        place(translated, button.window, button.x_root, button.y_root);
        return translated;
    }
    case GDK_MOTION_NOTIFY: {
        const GdkEventMotion& motion = event.motion;
        InputEvent translated;
        translated.type
            = (motion.state & GDK_BUTTON1_MASK) != 0 ? InputEventType::leftMouseDragged : InputEventType::mouseMoved;
        translated.modifierFlags = modifierFlags(motion.state);
        place(translated, motion.window, motion.x_root, motion.y_root);
        return translated;
    }
    case GDK_SCROLL: {
        const GdkEventScroll& scroll = event.scroll;
        InputEvent translated;
        translated.type = InputEventType::scrollWheel;
        translated.modifierFlags = modifierFlags(scroll.state);
        switch (scroll.direction) {
        case GDK_SCROLL_UP:
            translated.scrollingDeltaY = 1;
            break;
        case GDK_SCROLL_DOWN:
            translated.scrollingDeltaY = -1;
            break;
        case GDK_SCROLL_LEFT:
            translated.scrollingDeltaX = 1;
            break;
        case GDK_SCROLL_RIGHT:
            translated.scrollingDeltaX = -1;
            break;
        case GDK_SCROLL_SMOOTH:
            translated.scrollingDeltaX = -scroll.delta_x;
            translated.scrollingDeltaY = -scroll.delta_y;
            translated.hasPreciseScrollingDeltas = !smoothDeltasAreLines(event);
            break;
        }
        place(translated, scroll.window, scroll.x_root, scroll.y_root);
        return translated;
    }
    default:
        return std::nullopt;
    }
}

std::optional<InputEvent> GdkEventTranslator::translateKey(const GdkEventKey& key)
{
    const bool press = key.type == GDK_KEY_PRESS;
    InputEvent translated;
    translated.window = m_lookup ? m_lookup(key.window).window : nullptr;
    translated.keyCode = keyCode(key.hardware_keycode, key.keyval);
    translated.modifierFlags = modifierFlags(key.state);
    if (const std::uint64_t modifier = modifierOfKey(key.keyval); modifier != 0) {
        // GDK's state is the one before this key; the record carries the
        // one after it. Caps Lock toggles on its press.
        translated.type = InputEventType::flagsChanged;
        if (modifier == ModifierFlag::capsLock)
            translated.modifierFlags ^= press ? modifier : 0;
        else if (press)
            translated.modifierFlags |= modifier;
        else
            translated.modifierFlags &= ~modifier;
        return translated;
    }
    translated.type = press ? InputEventType::keyDown : InputEventType::keyUp;
    const std::size_t held = key.hardware_keycode;
    if (held < m_heldKeys.size()) {
        translated.isARepeat = press && m_heldKeys.test(held);
        m_heldKeys.set(held, press);
    }
    return translated;
}

void GdkEventTranslator::place(InputEvent& event, GdkWindow* window, double rootX, double rootY) const
{
    if (!m_lookup)
        return;
    const Target target = m_lookup(window);
    event.window = target.window;
    event.locationInWindow = {rootX - target.contentOrigin.x, target.contentHeight - (rootY - target.contentOrigin.y)};
}

} // namespace velmora
