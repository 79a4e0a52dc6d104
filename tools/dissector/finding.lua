-- Where frames are looked for.

-- On other ports: bytes that begin with a header, a length in reach and, once all is there, a right
-- checksum.
local function is_ours(tvb, pinfo)
    local s = tvb:raw()
    local said = frame_at(s, 1) and said_size(s, 1)
    if not said then
        return false
    end
    if said > #s then
        return pinfo.can_desegment > 0
    end
    return is_right(s, 1, said)
end

local function try(tvb, pinfo, tree)
    if not is_ours(tvb, pinfo) then
        return false
    end
    local said = said_size(tvb:raw(), 1)
    if said <= tvb:len() then
        pinfo.conversation = proto
    end
    dissect(tvb, pinfo, tree) -- by way of Wireshark it couldn't ask for more bytes
    return true
end
proto:register_heuristic("tcp", try)
proto:register_heuristic("udp", try)

local taken = {}
local function take(table_name, pattern)
    local ports = DissectorTable.get(table_name)
    if taken[table_name] and taken[table_name] ~= "" then
        ports:remove(taken[table_name], proto)
    end
    taken[table_name] = pattern
    if pattern ~= "" then
        ports:add(pattern, proto)
    end
end

local function take_all()
    take("tcp.port", proto.prefs.tcp_ports)
    take("udp.port", proto.prefs.udp_ports)
    if proto.prefs.user0 ~= taken.user0 then
        local links = DissectorTable.get("wtap_encap")
        local change = proto.prefs.user0 and links.add or links.remove
        change(links, USER0, proto)
        taken.user0 = proto.prefs.user0
    end
end
proto.prefs_changed = take_all
take_all()
