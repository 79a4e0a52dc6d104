-- Questions and answers. What the first pass over a capture finds out is kept, frame by frame in
-- the order in which a packet shows them, since later passes see packets in any order.

local conversations, records
local shown_packet, shown_count

function proto.init()
    conversations, records = {}, {}
    shown_packet, shown_count = nil, 0
end

local function is_networked(pinfo)
    return pinfo.port_type == PORT_TYPE_TCP or pinfo.port_type == PORT_TYPE_UDP
end

-- UDP commands leave from ever new ports, so that addresses alone tell who talks to whom. A capture
-- without addresses is one conversation.
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

-- A command is one question however often it is repeated, until it has its answer.
local function note_command(conversation, record, frame, now, number)
    record.period = conversation.last_time and now - conversation.last_time
    conversation.last_time = now
    if not frame.is_right or not frame.code then
        return
    end
    local code, questions = frame.code, conversation.questions
    local question = questions[code]
    if code ~= 0 then
        local is_repeated = question and not question.answer and conversation.last_code == code
        record.question = is_repeated and question or { number = number, time = now }
        record.is_repeat = is_repeated
        questions[code] = record.question
    end
    conversation.last_code = code
end

local function note_answer(conversation, record, frame, now, number)
    if not frame.is_right or frame.size ~= ANSWER_SIZE or frame.code == 0 then
        return
    end
    local question = conversation.questions[frame.code]
    record.question = question
    record.is_unasked = not question
    if question and not question.answer then
        question.answer = number
        record.response_time = now - question.time
    end
end

local function note_frame(pinfo, frame)
    local record = {}
    local note = frame.id == "host" and note_command or note_answer
    note(conversation_of(pinfo), record, frame, pinfo.rel_ts, pinfo.number)
    return record
end

-- The record of the next frame of this packet. One packet may be shown twice in a row.
local function record_of(pinfo, frame)
    if shown_packet ~= pinfo.number then
        shown_packet, shown_count = pinfo.number, 0
    end
    local list = records[pinfo.number] or {}
    records[pinfo.number] = list
    if pinfo.visited and #list > 0 then
        shown_count = shown_count % #list + 1
    else
        shown_count = shown_count + 1
        list[shown_count] = note_frame(pinfo, frame)
    end
    return list[shown_count]
end
