-- fields.lua
function field(object, name)
    return object[name]
end
