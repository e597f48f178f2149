-- What becomes of files that are written over when something goes wrong, and through which names they are known.

local here = arg[0]:gsub("[^/]*$", "")
local t = dofile(here .. "../support/support.lua")
local examples = dofile(here .. "../support/examples.lua")
local processes, files = require "gif.processes", require "gif.files"
local gif = here .. "../../examples/gifs/lighthouse.gif"

-- Runs a line of the shell, in which $gifhost starts this program and $examples is their folder; gives its status and
-- all that it said.
local function shell(line, ...)
  local command = processes.command(processes.this_program())
  local pipe = io.popen(("gifhost() { command %s \"$@\"; }; examples=%s; { %s; } 2>&1"):format(
    command, files.quoted(here .. "../../examples"), line:format(...)))
  local output = pipe:read("a")
  local _, _, status = pipe:close()
  return status, output
end

local function litter(folder)
  local pipe <close> = io.popen("ls -A " .. folder .. " | grep -c part$")
  return pipe:read("n")
end

-- Refusals: each says why, fails, and leaves the old file and nothing else.
examples.with_folder(function(folder)
  local old = ("old "):rep(9)
  for _, script in ipairs {
    "edit.lua --comment x " .. gif, "build.lua", "sheet.lua " .. gif, "report.lua " .. gif, "first.lua " .. gif,
  } do
    local out = folder .. "/out"
    for form, reason in pairs {
      ["gifhost $examples/%s /dev/full"] = "/dev/full: No space left on device",
      ["(ulimit -f 1; gifhost $examples/%s %s)"] = "out: File too large",
      ["gifhost $examples/%s %s/"] = "out/: Not a directory",
      ["gifhost $examples/%s %s/../none/out"] = "out/../none/out: ",
      ["gifhost $examples/%s %s/.."] = "out/..: ",
    } do
      examples.write(out, old)
      local status, said = shell(form, script, out)
      t.expect(form .. script .. said, status, 1)
      assert(said:find(reason, 1, true), said)
      t.expect("old file", examples.read(out), old)
      t.expect("litter", litter(folder), 0)
    end
  end

  -- Signals, while a file is on its way and a scratch file is in use
  for signal, left in pairs { TERM = 0, INT = 0, HUP = 0, KILL = 2 } do
    examples.write(folder .. "/out", old)
    shell([[TMPDIR=%s gifhost -e '
      local file, scratch = OutputFile(arg[1]), OutputFile()
      file:Write("new") scratch:Write("new")
      io.popen("kill -%s $PPID"):close()
      while true do end' %s/out]], folder, signal, folder)
    t.expect(signal, litter(folder), left)
    t.expect(signal, examples.read(folder .. "/out"), old)
    os.execute("rm -f " .. folder .. "/.*.part")
  end
end)

-- What is written: through links, with mode and owner, into pipes; what would be lost by a slip is not.
examples.with_folder(function(folder)
  local a = folder .. "/a.gif"
  examples.write(a, examples.read(gif))
  assert(os.execute(("cd %s && chmod 640 a.gif && ln -s a.gif link && ln -s new dangling && ln a.gif hard && mkfifo pipe"):format(folder)))
  local is_root = io.popen("id -u"):read("n") == 0
  if is_root then os.execute("chown 65534:65534 " .. a) end
  for _, script in ipairs { "sheet", "first", "report" } do
    for _, name in ipairs { "a.gif", "./a.gif", "link", "hard" } do
      t.expect(script .. name, examples.run(script, a, folder .. "/" .. name), 2)
    end
  end
  t.expect("frames", os.execute(("mkdir %s/f && ln -s ../a.gif %s/f/000.png"):format(folder, folder)), true)
  t.expect("frames", examples.run("frames", a, folder .. "/f"), 1)
  t.expect("unchanged", examples.read(a), examples.read(gif))

  for _, name in ipairs { "a.gif", "link", "dangling" } do
    t.expect(name, examples.run("edit", "--comment", name, a, folder .. "/" .. name), 0)
  end
  local function facts(name)
    local pipe <close> = io.popen(("stat -c '%%a %%u %%F' %s/%s"):format(folder, name))
    return pipe:read("l")
  end
  t.expect("mode", facts("a.gif"), is_root and "640 65534 regular file" or facts("a.gif"))
  t.expect("link", facts("link"):match("%a.*"), "symbolic link")
  t.expect("comments", FolderItem(a):OpenAsGIFZKV().Count, 34 + 2)
  t.expect("through a link", FolderItem(folder .. "/new"):OpenAsGIFZKV().Count, 34 + 3)
  if is_root then
    local as_other = "setpriv --reuid=65533 --clear-groups "
    if os.execute("command -v setpriv >/dev/null && " .. as_other .. processes.command(processes.this_program()) .. " --version >/dev/null") then
      os.execute(("chmod 777 %s; cp %s %s/b.gif; chmod 444 %s/b.gif"):format(folder, gif, folder, folder))
      local status, said = shell("%s %s $examples/edit.lua --comment x %s %s/b.gif", as_other,
        processes.command(processes.this_program()), gif, folder)
      t.expect(said, status, 1)
      assert(said:find("b.gif: Permission denied", 1, true), said)
    end
  end

  -- Pipes on both sides, and standard output, which nothing else is written to
  for _, row in ipairs {
    { "tree.lua --json", "sum" }, { "check.lua", "16 images" }, { "sheet.lua", "16 frames", "/dev/null" },
    { "report.lua", "16 frames", "/dev/null" }, { "first.lua", "160 x 120", "/dev/null" },
    { "edit.lua --loop 3", "3 times", "/dev/null" },
  } do
    local script, said, output = table.unpack(row)
    local status, got = shell("cat %s | gifhost $examples/%s /dev/stdin %s", gif, script, output or "")
    t.expect(script .. got, status, 0)
    assert(got:find(said, 1, true), got)
    local _, dash = shell("cat %s | gifhost $examples/%s - %s", gif, script, output and "- 2>&1 >/dev/null" or "")
    assert(dash:find(said, 1, true), dash)
  end
  -- Standard output that is a file, shared with others
  shell("{ echo before; cat %s | gifhost $examples/payload.lua --get comment=- -; echo behind; } >%s/shared", gif, folder)
  t.expect("shared", (examples.read(folder .. "/shared"):gsub(", drawn.*cpp", "")), "before\nA lighthouse at nightbehind\n")
  t.expect("twice", shell("gifhost $examples/diff.lua - -"), 2)
  local _, bytes = shell("cat %s | gifhost $examples/edit.lua --comment x /dev/stdin /dev/stdout 2>/dev/null | cat", gif)
  t.expect("piped", GifStringToGifZKV(bytes).Count, 35)
  shell("cat %s/pipe > %s/piped & gifhost $examples/first.lua %s %s/pipe; wait", folder, folder, gif, folder)
  t.expect("into a pipe", Picture(folder .. "/piped").Width, 160)
  shell("cat %s/piped | gifhost $examples/build.lua /dev/stdin %s/built.gif", folder, folder)
  t.expect("of a pipe", FolderItem(folder .. "/built.gif"):OpenAsGIFZKV().Screen.Width, 160)
end)

-- Names are shown so that no terminal obeys them.
examples.with_folder(function(folder)
  local name = folder .. "/a\27[2J\n\u{9B}é\xFF.gif"
  local shown = "/a\\x1B[2J\\x0A\\u{9B}é\\xFF.gif"
  examples.write(name, examples.read(gif))
  for _, row in ipairs {
    { "tree", name }, { "check", name, folder }, { "edit", name, folder .. "/x.gif" }, { "sheet", name, name .. "/x" },
    { "first", name, name .. "/x" }, { "tree", name .. "x" }, { "report", name .. "x", folder .. "/x" },
    { "build", name, folder .. "/x" },
  } do
    local _, said, errors = examples.run(table.unpack(row))
    local all = said .. errors
    assert(all:find(shown:sub(1, -5), 1, true) and not all:find("[\27\xFF]"), all)
  end
end)
