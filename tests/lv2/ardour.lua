-- What ardour.sh has Ardour do, a step for each process: lay, choose, reopen. Folder of the session, plug-in
-- and preset come by the environment.

local step, folder = os.getenv("STEP"), os.getenv("SESSION")
local uri, label = os.getenv("PLUGIN"), os.getenv("PRESET")
local rate, frames = 48000, 48000

local function check(holds, what)
  if not holds then
    print("error: " .. what)
    quit()
  end
end

AudioEngine:set_backend("None (Dummy)", "", "")
check(AudioEngine:set_sample_rate(rate) == 0, "no such rate")
check(AudioEngine:start(false) == 0, "no audio engine")

local session
if step == "lay" then
  session = create_session(folder, "strip", rate)
else
  session = load_session(folder, "strip")
end
check(session, "no session")

local function track()
  return session:route_by_name("voice"):to_track()
end

local function bounce(processor, name)
  ARDOUR.LuaAPI.usleep(1000000)  -- live, so that all that glides comes to rest
  local region = track():bounce_range(0, frames, ARDOUR.InterThreadInfo(), processor, true, name)
  check(not region:isnil(), "the track was not rendered")
  return region
end

-- Ports as the host's own list holds them. Audio ports come first in it and are no parameters.
local function print_controls(strip)
  local plugin = strip:to_insert():plugin(0)
  local which = 0
  for port = 0, plugin:parameter_count() - 1 do
    if plugin:parameter_is_control(port) then
      if plugin:parameter_is_input(port) then
        print(string.format("control %s=%.9g", plugin:parameter_label(port), ARDOUR.LuaAPI.get_processor_param(strip, which, true)))
      end
      which = which + 1
    end
  end
end

if step == "lay" then
  -- a region to be filled with a recording: Ardour imports files only from its window
  session:new_audio_track(1, 1, nil, 1, "voice", ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true)
  local generator = ARDOUR.LuaAPI.new_luaproc(session, "SinGen")
  check(track():add_processor_by_index(generator, 0, nil, true) == 0, "no generator on the track")
  local region = bounce(generator, "voice")
  track():remove_processor(generator, nil, true)
  track():playlist():add_region(region, Temporal.timepos_t(0), 1, false)
elseif step == "choose" then
  local strip = ARDOUR.LuaAPI.new_plugin(session, uri, ARDOUR.PluginType.LV2, "")
  check(not strip:isnil(), "no plug-in " .. uri)
  check(track():add_processor_by_index(strip, 0, nil, true) == 0, "the strip does not go on the track")
  local plugin, chosen = strip:to_insert():plugin(0), nil
  local presets = plugin:get_info():get_presets(false)
  for preset in presets:iter() do
    if preset.label == label then chosen = preset end
  end
  print("presets " .. presets:size())
  check(chosen, "no preset " .. label)
  check(plugin:load_preset(chosen), "the preset is not taken")
  print_controls(strip)
  bounce(strip, "first")
elseif step == "reopen" then
  local strip = track():nth_plugin(0)
  check(not strip:isnil(), "the strip is gone from the track")
  print_controls(strip)
  bounce(strip, "second")
end

session:save_state("")
close_session()
print("done " .. step)
quit()
