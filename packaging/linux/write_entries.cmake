# Writes the desktop entry and the bus's service file of the installed program ${program}, from ${entries}.*.in.

# Both formats quote alike: a backslash before four characters, and double quotes around all.
set(command "${program}")
if(program MATCHES "[^A-Za-z0-9/._+-]")
  string(REGEX REPLACE "([\"`$\\\\])" "\\\\\\1" command "${program}")
  set(command "\"${command}\"")
endif()
configure_file(${entries}.service.in ${entries}.service @ONLY)

# In a desktop entry, backslashes and the percent signs of commands are doubled.
string(REPLACE "\\" "\\\\" command "${command}")
string(REPLACE "%" "%%" command "${command}")
string(REPLACE "\\" "\\\\" program "${program}")
configure_file(${entries}.desktop.in ${entries}.desktop @ONLY)
