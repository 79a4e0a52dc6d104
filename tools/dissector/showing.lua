-- Showing. `frame` holds its bytes, its size and its place in `tvb`. Of what nobody sees and no
-- filter or column asks for, nothing is added to the tree: that is most of the time of a large
-- capture.

local function complain(item, view, expert_id, text, ...)
    item:add_proto_expert_info(EXPERTS[expert_id], format(TEXTS[text][view.language], ...))
end

local function is_wanted(tree, row)
    return row.has_details or tree:referenced(row.field) or row.raw and tree:referenced(row.raw)
end

-- The text of a scaled field. It is kept until the value changes, which it seldom does.
local function label_of(row, raw)
    if row.labelled ~= raw then
        row.labelled = raw
        row.label = format("%s: %.15g%s (%d)", row.name, raw / row.k, row.tail, raw)
    end
    return row.label
end

-- A field `at` bytes into the frame, or nil where the frame ends before it or nobody wants it.
local function show_number(tree, frame, row, at)
    if at + row.size > frame.size or not (frame.is_shown or is_wanted(tree, row)) then
        return nil
    end
    local range = frame.tvb(frame.at + at, row.size)
    if not row.k then
        local item = add_le(tree, row.field, range)
        return row.tail == "" and item or append_text(item, row.tail)
    end
    local raw = row.read(range)
    local item = add(tree, row.field, range, raw / row.k, label_of(row, raw))
    add_le(item, row.raw, range)
    return item
end

local function show_params(tree, frame, view, row, at)
    if row.fixed and at < frame.area_end then
        local value = byte(frame.bytes, at + 1)
        local item = tree:add(view["command.fixed"], frame.tvb(frame.at + at, 1))
        if value ~= row.fixed then
            complain(item, view, "fixed", "other_fixed", value, row.fixed)
        end
        at = at + 1
    end
    for _, id in ipairs(row.params) do
        local param = view.params[id]
        if at + param.size > frame.area_end then
            return at
        end
        show_number(tree, frame, param, at)
        at = at + param.size
    end
    return at
end

local function show_rest(tree, frame, field, at)
    if at < frame.area_end then
        tree:add(field, frame.tvb(frame.at + at, frame.area_end - at))
    end
end

-- The code that opens either area.
local function show_code(tree, frame, view, area)
    local range = frame.tvb(frame.at + AREA_AT, 1)
    local item = tree:add(view[area .. ".code"], range)
    local row = COMMANDS[frame.code]
    if row then
        local id = tree:add(view[area .. ".id"], range, row.id):set_generated()
        id:append_text(": " .. row.note[view.language])
    else
        complain(item, view, "unknown", "unknown", frame.code)
    end
    return row
end

local function show_command(tree, frame, view)
    local row = show_code(tree, frame, view, "command")
    local at = AREA_AT + 1
    if row then
        at = show_params(tree, frame, view, row, at)
        local there = frame.area_end - AREA_AT
        if there ~= row.size and frame.has_crc then
            complain(tree, view, "area", "area", there, row.size)
        end
    end
    show_rest(tree, frame, view["command.rest"], at)
end

local function show_feedback(tree, frame, view)
    show_code(tree, frame, view, "feedback")
    local at = AREA_AT + 1
    if at < frame.area_end then
        tree:add(view["feedback.result"], frame.tvb(frame.at + at, 1))
    end
    show_rest(tree, frame, view["feedback.rest"], at + 1)
end

local function show_area(tree, frame, view, row)
    local size = frame.area_end - AREA_AT
    if size <= 0 then
        if frame.id == "host" and frame.has_crc then
            complain(tree, view, "area", "empty")
        end
        return
    end
    local item = tree:add(row.field, frame.tvb(frame.at + AREA_AT, size))
    local show = frame.id == "host" and show_command or show_feedback
    show(item, frame, view)
end

local function show_crc(tree, frame, view, row)
    if not frame.has_crc then
        return
    end
    local range = frame.tvb(frame.at + frame.size - CRC_SIZE, CRC_SIZE)
    local item = tree:add(row.field, range)
    item:add(row.status, range, frame.is_right and 1 or 0):set_generated()
    item:append_text(" " .. STATUS[frame.is_right and 1 or 0][view.language])
    if not frame.is_right then
        local high, low = checksum(frame.bytes, 1, frame.size - CRC_SIZE)
        complain(item, view, "checksum", "should", high * 256 + low)
    end
end

local function show_mode(tree, frame, view)
    local row = MODES[frame.mode]
    if row then
        local id = tree:add(view["gcu.mode.id"], frame.tvb(frame.at + 5, 1), row.id):set_generated()
        id:append_text(": " .. row.note[view.language])
    end
end

local function show_length(item, frame, view)
    if frame.is_cut then
        complain(item, view, "cut", "cut", frame.size, frame.said)
    elseif frame.said ~= frame.size then
        complain(item, view, "length", "length", frame.said, frame.size)
    end
end

local function show_flags(item, frame, view)
    local range = frame.tvb(frame.at + 11, 1)
    for _, field in ipairs(view.flags) do
        add(item, field, range)
    end
end

-- What belongs to a field beyond its row.
local DETAILS = { length = show_length, mode = show_mode, flags = show_flags }
local AREAS = { command = show_area, feedback = show_area, crc = show_crc }

local function show_rows(tree, frame, view)
    for _, row in ipairs(view[frame.id]) do
        local area = AREAS[row.id]
        if area then
            area(tree, frame, view, row)
        else
            local item = show_number(tree, frame, row, row.at)
            local detail = DETAILS[row.id]
            if item and detail then
                detail(item, frame, view)
            end
        end
    end
end

local function seconds(value)
    -- Rounded first: a fraction that rounds up is a second more. Both parts have the sign.
    local sign = value < 0 and -1 or 1
    local nanoseconds = floor(sign * value * 1e9 + 0.5)
    local whole = floor(nanoseconds / 1e9)
    return NSTime.new(sign * whole, sign * (nanoseconds - whole * 1e9))
end

local WAITS = { "response_time", "completion_time" }

local function show_record(tree, record, frame, view)
    local question = record.question
    if record.period then
        tree:add(view.period, seconds(record.period)):set_generated()
    end
    if frame.id == "host" then
        if record.is_repeat then
            tree:add(view.repeat_of, question.number):set_generated()
        end
        if question and question.answer then
            tree:add(view.response_in, question.answer):set_generated()
        end
    elseif question then
        tree:add(view.response_to, question.number):set_generated()
    end
    for _, id in ipairs(WAITS) do
        if record[id] then
            tree:add(view[id], seconds(record[id])):set_generated()
        end
    end
    if record.is_unasked then
        complain(tree, view, "unasked", "unasked")
    end
end

local function unknown_name(code)
    return format("0x%02X", code)
end

-- A frame in a few words, for the column of that purpose.
local function summary(frame, view)
    local language = view.language
    local words = { frame.name[language] .. ":" }
    if frame.mode then
        words[2] = (view.modes[frame.mode] or unknown_name(frame.mode)) .. ","
    end
    if frame.code then
        words[#words + 1] = view.commands[frame.code] or unknown_name(frame.code)
    elseif not frame.has_crc then
        words[#words + 1] = TEXTS.incomplete[language]
    else
        words[#words + 1] = WORDS.none[language]
    end
    if frame.id == "gcu" and frame.area_end > AREA_AT + 1 then
        words[#words + 1] = RESULTS[result_of(frame)][language]
    end
    return table.concat(words, " ")
end

-- Where the command or the feedback ends: in front of the checksum, also of one that was cut off.
local function area_end_of(size, said, has_crc)
    if has_crc then
        return size - CRC_SIZE
    end
    return said >= SMALLEST and min(size, said - CRC_SIZE) or size
end

local function read_frame(tvb, s, at, size, kind, known_right)
    local bytes = sub(s, at, at + size - 1)
    local low, high = byte(bytes, 3, 4)
    local first, last = byte(bytes, -CRC_SIZE, -1)
    local said = high and low + 256 * high or 0
    -- A frame that was cut off ends without a checksum.
    local right = known_right or size >= SMALLEST and is_right(bytes, 1, size)
    local has_crc = right or size >= SMALLEST and said <= size
    local area_end = area_end_of(size, said, has_crc)
    local is_last = at + size > #s
    return { tvb = tvb, at = at - 1, size = size, bytes = bytes, id = kind.id, name = kind.name,
        identity = (size * 256 + first) * 256 + last, said = said, is_right = right,
        has_crc = has_crc, area_end = area_end, is_shown = false,
        is_cut = is_last and said > size and tvb:reported_len() > #s,
        code = area_end > AREA_AT and byte(bytes, AREA_AT + 1) or nil,
        mode = kind.id == "gcu" and byte(bytes, 6) or nil }
end

-- Of a capture without addresses: who sends is certain.
local function tell_ends(pinfo, is_host, language)
    local names = { FRAMES[HOST_HEADER].name[language], FRAMES[GCU_HEADER].name[language] }
    pinfo.cols.src = names[is_host and 1 or 2]
    pinfo.cols.dst = names[is_host and 2 or 1]
end

-- Something that an expert item says of, wanted or not.
local function is_odd(frame, record)
    if not frame.is_right or frame.said ~= frame.size or record.is_unasked then
        return true
    end
    local row = COMMANDS[frame.code]
    if not row or frame.id == "gcu" then
        return not row and (frame.code ~= nil or frame.id == "host")
    end
    return frame.area_end - AREA_AT ~= row.size
        or row.fixed and row.fixed ~= byte(frame.bytes, AREA_AT + 2)
end

local own_dissector
local told -- frames of this call

-- A packet may come in several calls, whose frames stand in one column.
local function tell(pinfo, frame, record, language, text)
    told = told + 1
    if record == records[pinfo.number] or record == UNRECORDED and told == 1 then
        pinfo.cols.info = text
        if not is_networked(pinfo) then
            tell_ends(pinfo, frame.id == "host", language)
        end
    else
        pinfo.cols.info:append("; " .. text)
    end
end

-- Which way it went, where the capture says so.
local function direction_of(pinfo)
    return DIRECTIONS[pinfo.p2p_dir] and not is_networked(pinfo) and pinfo.p2p_dir
end

local function show_direction(pinfo, tree, view)
    local direction = direction_of(pinfo)
    if direction then
        tree:add(view.direction, direction):set_generated()
    end
end

local function show_frame(pinfo, tree, view, frame)
    local record = record_of(pinfo, frame)
    local text = summary(frame, view)
    tell(pinfo, frame, record, view.language, text)
    if tree:referenced(own_dissector) or is_odd(frame, record) then
        local item = tree:add(proto, frame.tvb(frame.at, frame.size)):append_text(", " .. text)
        frame.is_shown = item.visible
        show_direction(pinfo, item, view)
        show_rows(item, frame, view)
        show_record(item, record, frame, view)
    end
end

local function show_noise(tvb, pinfo, tree, view, at, size)
    local range = tvb(at - 1, size)
    if shown_packet ~= pinfo.number then
        pinfo.cols.info = TEXTS.noise[view.language]
        local direction = direction_of(pinfo)
        if direction then
            tell_ends(pinfo, direction == 0, view.language)
        end
    end
    local item = tree:add(proto, range):append_text(", " .. TEXTS.noise[view.language])
    show_direction(pinfo, item, view)
    complain(item:add(view.noise, range), view, "noise", "noise")
end

local function dissect(tvb, pinfo, tree)
    local view = VIEWS[proto.prefs.language] or VIEWS[1]
    local s = tvb:raw()
    told = 0
    pinfo.cols.protocol = "NACELLE"
    local rest = cut(s, pinfo.can_desegment > 0, function(at, size, kind, known_right)
        if kind then
            show_frame(pinfo, tree, view, read_frame(tvb, s, at, size, kind, known_right))
        else
            show_noise(tvb, pinfo, tree, view, at, size)
        end
    end)
    if rest then
        pinfo.desegment_offset = rest - 1
        pinfo.desegment_len = DESEGMENT_ONE_MORE_SEGMENT
    end
    return tvb:len()
end
proto.dissector = dissect
own_dissector = Dissector.get("nacelle")
