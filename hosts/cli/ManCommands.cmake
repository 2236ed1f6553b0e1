# Writes the COMMANDS section of the manual page from each command's own --help (the exit
# codes, the same for every command, are left to the page's main text).
#   cmake -DQVPLC=path/to/qvplc -DOUT=commands.h2m -P ManCommands.cmake
set(commands "lib init" "lib tree" "lib check" "lib show" "lib migrate" "lib new-manufacturer"
    "lib new-series" "lib new-type" "lib new-module" "lib rename" "lib delete" "lib set-short"
    "lib set-module" "lib find" "lib term append" "lib term insert" "lib term delete"
    "lib term change" "lib term reorder" "lib edit" "draw" "batch" "check" "report" "settings show"
    "settings set" "dxf info" "dxf convert" "dxf render" "net login" "net status"
    "net checkout" "net checkin" "net publish")
file(WRITE ${OUT} "[COMMANDS]\n")
foreach(command ${commands})
    separate_arguments(words UNIX_COMMAND "${command}")
    execute_process(COMMAND ${QVPLC} ${words} --help OUTPUT_VARIABLE help RESULT_VARIABLE rc)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "qvplc ${command} --help failed")
    endif()
    string(FIND "${help}" "\nExit codes:" cut)
    if(cut GREATER 0)
        string(SUBSTRING "${help}" 0 ${cut} help)
    endif()
    string(REPLACE "\\" "\\e" help "${help}")
    string(REPLACE "-" "\\-" help "${help}")
    string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" help "${help}")
    file(APPEND ${OUT} ".SS \"qvplc ${command}\"\n.nf\n${help}\n.fi\n")
endforeach()
