-- Checksum: CRC-16/XMODEM, a byte a step, with high and low half apart.

local CRC_HIGH, CRC_LOW = {}, {}
local XOR = {} -- of any two bytes: a look-up takes a fifth of the time of a call
for i = 0, 255 do
    local crc = i * 256
    for _ = 1, 8 do
        crc = crc >= 0x8000 and bxor(crc % 0x8000 * 2, 0x1021) or crc * 2
    end
    CRC_HIGH[i], CRC_LOW[i] = floor(crc / 256), crc % 256
    XOR[i] = {}
    for other = 0, 255 do
        XOR[i][other] = bxor(i, other)
    end
end

-- The checksum of `size` bytes of `s` from `first` on, in its two halves.
local function checksum(s, first, size)
    local high, low = 0, 0
    for i = first, first + size - 1 do
        local index = XOR[high][byte(s, i)]
        high, low = XOR[low][CRC_HIGH[index]], CRC_LOW[index]
    end
    return high, low
end

-- Cutting: what a run of bytes consists of.

local function frame_at(s, at)
    return FRAMES[sub(s, at, at + 1)]
end

-- The next place from `from` on where a frame's header stands, or one past the end.
local function next_header(s, from)
    local host = find(s, HOST_HEADER, from, true) or #s + 1
    local gcu = find(s, GCU_HEADER, from, true) or #s + 1
    return min(host, gcu)
end

-- S, nil where it isn't there or is none.
local function said_size(s, at)
    local low, high = byte(s, at + 2, at + 3)
    local said = high and low + 256 * high
    if said and said >= SMALLEST and said <= proto.prefs.largest then
        return said
    end
end

local function is_right(s, at, size)
    local high, low = checksum(s, at, size)
    return high == 0 and low == 0
end

-- The first header after `at` and before `stop` for which test(its place, S, bytes there) holds.
local function inner_header(s, at, stop, test)
    local inner = next_header(s, at + 2)
    while inner < stop do
        local said = said_size(s, inner)
        if said and test(inner, said, #s - inner + 1) then
            return inner
        end
        inner = next_header(s, inner + 1)
    end
end

local function right_inside(s, at, stop)
    return inner_header(s, at, stop, function(inner, said, there)
        return said <= there and is_right(s, inner, said)
    end)
end

local function begun_inside(s, at, stop)
    return inner_header(s, at, stop, function(_, said, there)
        return said > there
    end)
end

-- Whether a frame may end in front of `follows`: at another header, or at the end of all.
local function may_end(s, follows, may_be_last)
    return follows > #s and may_be_last or frame_at(s, follows)
end

-- The size at which what begins at `at` is a frame with a right checksum, whatever its length field
-- says: there the checksum over all, its own bytes included, is 0, and a header follows, or nothing
-- where `may_be_last`. Failing that, nil and the size in front of noise. A checksum that ends in 00 is
-- 0 one byte early, too.
local function size_by_checksum(s, at, most, may_be_last)
    local high, low = 0, 0
    local first, second
    for size = 1, most do
        local index = XOR[high][byte(s, at + size - 1)]
        high, low = XOR[low][CRC_HIGH[index]], CRC_LOW[index]
        if high == 0 and low == 0 and size >= SMALLEST then
            if may_end(s, at + size, may_be_last) then
                return size
            end
            first = first or size
            second = size == first + 1 and size or second
        end
    end
    return nil, second or first
end

-- The size of a frame whose length field or checksum is wrong; nil where nothing tells.
local function broken_size(s, at, said, may_be_last)
    local there = #s - at + 1
    local size, in_front_of_noise =
        size_by_checksum(s, at, min(there, proto.prefs.largest), may_be_last)
    if size then
        return size
    end
    local stop = said and min(at + said, #s + 1) or #s + 1
    local inner = right_inside(s, at, stop)
    local said_is_right = said and may_end(s, at + said, may_be_last)
    if in_front_of_noise and may_be_last and not said_is_right
        and not (inner and inner < at + in_front_of_noise) then
        return in_front_of_noise
    end
    return inner and inner - at
end

-- A frame with a header at `at`: its size and whether it is known to be right, or nil to wait for
-- more bytes. What the rest is waited for isn't taken for a frame by its checksum: it may be a good one
-- that is split before its last byte.
local function frame_size(s, at, may_wait)
    local there = #s - at + 1
    local said = said_size(s, at)
    if said and said <= there and is_right(s, at, said) then
        return said, true
    end
    local is_short = there < 4 or said and said > there
    local size = there >= SMALLEST and broken_size(s, at, said, not (may_wait and is_short))
    if size then
        return size
    end
    if may_wait and (is_short or said and begun_inside(s, at, at + said)) then
        return nil
    end
    return said and min(said, there) or next_header(s, at + 2) - at
end

-- Bytes in front of the next header; the first half of a header at the end may wait for the other.
local function noise_size(s, at, may_wait)
    local stop = next_header(s, at)
    local last = byte(s, #s)
    if stop > #s and may_wait and (last == 0xA8 or last == 0x8A) then
        stop = #s
    end
    return stop - at
end

-- Calls take(at, size, frame, known right) for each piece of `s`, `frame` being nil for noise.
-- Returns the place from which on more bytes are needed, or nil.
local function cut(s, may_wait, take)
    local at = 1
    while at <= #s do
        local frame = frame_at(s, at)
        local size, known_right
        if frame then
            size, known_right = frame_size(s, at, may_wait)
            if size and size < SMALLEST and not said_size(s, at) then
                frame = nil
            end
        else
            size = noise_size(s, at, may_wait)
        end
        if not size or size == 0 then
            return at
        end
        take(at, size, frame, known_right)
        at = at + size
    end
end
