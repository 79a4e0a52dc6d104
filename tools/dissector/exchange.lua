-- Questions and answers. The first pass over a capture alone finds them out, since later passes see
-- packets in any order. Its results are kept for each packet: a record for each frame, in their order,
-- that leads to the next.

local conversations, records
local shown_packet, shown
local UNRECORDED = {}

function proto.init()
    conversations, records = {}, {}
    shown_packet, shown = nil, nil
end

local function is_networked(pinfo)
    return pinfo.port_type == PORT_TYPE_TCP or pinfo.port_type == PORT_TYPE_UDP
end

local function result_of(frame)
    return byte(frame.bytes, AREA_AT + 2)
end

-- UDP commands leave from ever new ports, so that addresses alone tell who talks to whom. A capture
-- without addresses is one conversation. TCP's number of the connection can't be had: the first pass has
-- no tree. So the next one by the same ports goes on in the conversation.
local function conversation_of(pinfo)
    local key = "capture"
    if is_networked(pinfo) then
        local from, to = tostring(pinfo.src), tostring(pinfo.dst)
        if pinfo.port_type == PORT_TYPE_TCP then
            from, to = from .. " " .. pinfo.src_port, to .. " " .. pinfo.dst_port
        end
        key = from < to and from .. " " .. to or to .. " " .. from
    end
    conversations[key] = conversations[key] or { questions = {} }
    return conversations[key]
end

-- A command is one question however often it is repeated, until it has its result.
local function note_command(conversation, record, frame, now, number)
    record.period = conversation.last_time and now - conversation.last_time
    conversation.last_time = now
    if not frame.is_right or not frame.code then
        return
    end
    local code, questions = frame.code, conversation.questions
    local question = questions[code]
    if code ~= 0 then
        local is_repeated = question and not question.is_done and conversation.last_code == code
        record.question = is_repeated and question or { number = number, time = now }
        record.is_repeat = is_repeated
        questions[code] = record.question
    end
    conversation.last_code = code
end

-- The first answer, and the first that says more than that the command is running: often the same.
local function note_answer(conversation, record, frame, now, number)
    if not frame.is_right or frame.size ~= ANSWER_SIZE or frame.code == 0 then
        return
    end
    local question = conversation.questions[frame.code]
    record.question = question
    record.is_unasked = not question
    if not question then
        return
    end
    if not question.answer then
        question.answer = number
        record.response_time = now - question.time
    end
    if not question.is_done and RESULTS[result_of(frame)] ~= WORDS.running then
        question.is_done = true
        record.completion_time = now - question.time
    end
end

-- What a frame of the first pass is part of. Its bytes aren't kept: a large capture would be kept twice.
local function note_frame(pinfo, frame)
    local record = { identity = frame.identity }
    local note = frame.id == "host" and note_command or note_answer
    note(conversation_of(pinfo), record, frame, pinfo.rel_ts, pinfo.number)
    return record
end

-- The next record of an equal frame: one packet may be shown twice in a row. A frame in front of the
-- one by which its port was found out is nobody's in the first pass, so that it has none.
local function recall(first, frame)
    local start = shown and shown.next or first
    local record = start
    while record and record.identity ~= frame.identity do
        record = record.next or first
        if record == start then
            return UNRECORDED
        end
    end
    shown = record or shown
    return record or UNRECORDED
end

local function record_of(pinfo, frame)
    local number = pinfo.number
    if shown_packet ~= number then
        shown_packet, shown = number, nil
    end
    if pinfo.visited then
        return recall(records[number], frame)
    end
    local record = note_frame(pinfo, frame)
    if shown then
        shown.next = record
    else
        records[number] = record
    end
    shown = record
    return record
end
