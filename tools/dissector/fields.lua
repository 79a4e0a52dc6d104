-- Fields. A view holds all of them in one language; those of both have the same filter names.

local MAKERS = { u8 = "uint8", i8 = "int8", u16 = "uint16", i16 = "int16", u32 = "uint32",
    i32 = "int32", bits = "uint8", bytes = "bytes" }

-- Fields with others below them, or with something to say of.
local WITH_DETAILS = { length = true, mode = true, flags = true }

local TEXTS = {
    raw = { en = "Raw value", zh = "原始整数" },
    bits = { en = "Other bits", zh = "其他位" },
    status = { en = "Checksum status", zh = "校验结果" },
    code = { en = "Command", zh = "命令" },
    command_id = { en = "Command id", zh = "命令标识" },
    mode_id = { en = "Work mode id", zh = "工作模式标识" },
    fixed = { en = "Fixed byte", zh = "固定字节" },
    result = { en = "Result", zh = "结果" },
    rest = { en = "Further bytes", zh = "其余字节" },
    noise = { en = "Bytes of no frame", zh = "不属于任何帧的字节" },
    direction = { en = "Direction", zh = "方向" },
    sent = { en = "sent", zh = "发" },
    received = { en = "received", zh = "收" },
    period = { en = "Time since the host frame before", zh = "距前一上位机帧的时间" },
    response_in = { en = "Answered in", zh = "应答所在" },
    response_to = { en = "Answer to", zh = "应答的命令所在" },
    response_time = { en = "Response time", zh = "应答时间" },
    completion_time = { en = "Time to the result", zh = "完成时间" },
    repeat_of = { en = "Repeats the command of", zh = "重复的命令所在" },
    should = { en = "Checksum wrong, should be 0x%04X", zh = "校验错误，应为 0x%04X" },
    length = { en = "Length field says %d, the frame has %d bytes", zh = "包长度为 %d，实际 %d 字节" },
    cut = { en = "The capture holds %d of %d bytes", zh = "记录只含 %d 字节，应有 %d 字节" },
    incomplete = { en = "incomplete", zh = "不完整" },
    empty = { en = "Command area is empty", zh = "命令区为空" },
    unknown = { en = "Unknown command 0x%02X", zh = "未知命令 0x%02X" },
    area = { en = "Area of %d bytes, the command has %d", zh = "命令区 %d 字节，该命令应为 %d 字节" },
    other_fixed = { en = "Fixed byte is 0x%02X, should be 0x%02X", zh = "固定字节为 0x%02X，应为 0x%02X" },
    unasked = { en = "Answer without a question", zh = "没有对应命令的应答" },
}

local EXPERTS = {}
local function expert_of(id, name, group, severity)
    EXPERTS[id] = ProtoExpert.new("nacelle.expert." .. id, name, group, severity)
end
expert_of("checksum", "Checksum wrong", expert.group.CHECKSUM, expert.severity.ERROR)
expert_of("length", "Length disagrees", expert.group.MALFORMED, expert.severity.ERROR)
expert_of("cut", "Cut off by the capture", expert.group.UNDECODED, expert.severity.NOTE)
expert_of("unknown", "Unknown command", expert.group.UNDECODED, expert.severity.WARN)
expert_of("area", "Command of another size", expert.group.PROTOCOL, expert.severity.WARN)
expert_of("fixed", "Another fixed byte", expert.group.PROTOCOL, expert.severity.WARN)
expert_of("unasked", "Answer without a question", expert.group.SEQUENCE, expert.severity.WARN)
expert_of("noise", "Bytes of no frame", expert.group.MALFORMED, expert.severity.NOTE)
proto.experts = EXPERTS

local all_fields = {}
local function add_field(maker, id, ...)
    local field = ProtoField[maker]("nacelle." .. id, ...)
    all_fields[#all_fields + 1] = field
    return field
end

-- Names by number, of rows or of plain names.
local function value_names(rows, language)
    local names = {}
    for code, row in pairs(rows) do
        names[code] = (row.name or row)[language]
    end
    return names
end

local RESULTS = { [0] = WORDS.succeeded, [1] = WORDS.failed }
for result = 2, 255 do
    RESULTS[result] = WORDS.running
end
local STATUS = { [0] = WORDS.fail, [1] = WORDS.pass }
local DIRECTIONS = { [0] = TEXTS.sent, [1] = TEXTS.received }

-- A number or a run of bytes; a scaled one shows its value, with the wire's integer under it.
local function number_field(view, id, row, names)
    local language = view.language
    local made = { id = row.id, at = row.at, size = row.size, kind = row.kind, k = row.k,
        tail = row.unit and " " .. row.unit or "", has_details = WITH_DETAILS[row.id] }
    local name, note = row.name[language], row.note and row.note[language]
    made.name = name
    if row.k then
        made.field = add_field("double", id, name, note)
        made.read = row.kind:sub(1, 1) == "u" and TvbRange.le_uint or TvbRange.le_int
        made.raw = add_field(MAKERS[row.kind], id .. ".raw", TEXTS.raw[language])
    elseif row.id == "crc" then
        made.field = add_field("uint16", id, name, base.HEX, nil, nil, note)
    elseif row.kind == "bytes" then
        made.field = add_field("bytes", id, name, base.SPACE, note)
    else
        local base_of = (names or row.kind == "bits") and base.HEX or base.DEC
        made.field = add_field(MAKERS[row.kind], id, name, base_of, names, nil, note)
    end
    return made
end

local function frame_fields(view, frame)
    local rows = {}
    for i, row in ipairs(frame.rows) do
        local names = row.id == "mode" and value_names(MODES, view.language)
        rows[i] = number_field(view, frame.id .. "." .. row.id, row, names or nil)
    end
    local crc = rows[#rows]
    crc.status = add_field("uint8", frame.id .. ".crc.status", TEXTS.status[view.language], base.DEC,
        value_names(STATUS, view.language))
    return rows
end

local function flag_fields(view)
    local fields, rest = {}, 0xFF
    for _, flag in ipairs(FLAG_BITS) do
        local mask = 2 ^ flag.bit
        rest = rest - mask
        fields[#fields + 1] = add_field("bool", "host.flags." .. flag.id,
            flag.name[view.language], 8, nil, mask)
    end
    fields[#fields + 1] = add_field("uint8", "host.flags.other", TEXTS.bits[view.language],
        base.HEX, nil, rest)
    return fields
end

-- Fields of our own, by the key of their text.
local function own_field(view, maker, id, key, ...)
    view[id] = add_field(maker, id, TEXTS[key][view.language], ...)
end

local function add_area_fields(view)
    own_field(view, "string", "gcu.mode.id", "mode_id")
    own_field(view, "uint8", "command.code", "code", base.HEX, view.commands)
    own_field(view, "string", "command.id", "command_id")
    own_field(view, "uint8", "command.fixed", "fixed", base.HEX)
    own_field(view, "bytes", "command.rest", "rest", base.SPACE)
    own_field(view, "uint8", "feedback.code", "code", base.HEX, view.commands)
    own_field(view, "string", "feedback.id", "command_id")
    own_field(view, "uint8", "feedback.result", "result", base.DEC,
        value_names(RESULTS, view.language))
    own_field(view, "bytes", "feedback.rest", "rest", base.SPACE)
end

local function add_link_fields(view)
    own_field(view, "bytes", "noise", "noise", base.SPACE)
    own_field(view, "uint8", "direction", "direction", base.DEC,
        value_names(DIRECTIONS, view.language))
    own_field(view, "relative_time", "period", "period")
    own_field(view, "framenum", "response_in", "response_in", base.NONE, frametype.RESPONSE)
    own_field(view, "framenum", "response_to", "response_to", base.NONE, frametype.REQUEST)
    own_field(view, "relative_time", "response_time", "response_time")
    own_field(view, "relative_time", "completion_time", "completion_time")
    own_field(view, "framenum", "repeat_of", "repeat_of", base.NONE, frametype.NONE)
end

local function make_view(language)
    local view = { language = language, params = {} }
    view.host = frame_fields(view, FRAMES[HOST_HEADER])
    view.gcu = frame_fields(view, FRAMES[GCU_HEADER])
    view.flags = flag_fields(view)
    for id, param in pairs(PARAMS) do
        view.params[id] = number_field(view, "command." .. id, param)
    end
    view.commands = value_names(COMMANDS, language)
    view.modes = value_names(MODES, language)
    add_area_fields(view)
    add_link_fields(view)
    return view
end

local VIEWS = {}
for i, language in ipairs(LANGUAGES) do
    VIEWS[i] = make_view(language)
end
proto.fields = all_fields
