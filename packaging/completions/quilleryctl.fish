# fish completion for quilleryctl.
set -l commands preview sort check backups restore undo next

complete -c quilleryctl -f
complete -c quilleryctl -s h -l help -d 'Print the help'
complete -c quilleryctl -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c quilleryctl -n "not __fish_seen_subcommand_from $commands" -a preview -d 'Show what a sort would move'
complete -c quilleryctl -n "not __fish_seen_subcommand_from $commands" -a sort -d 'Sort once'
complete -c quilleryctl -n "not __fish_seen_subcommand_from $commands" -a check -d 'Print whether a sort is needed'
complete -c quilleryctl -n "not __fish_seen_subcommand_from $commands" -a backups -d 'List the backups'
complete -c quilleryctl -n "not __fish_seen_subcommand_from $commands" -a restore -d 'Restore a backup'
complete -c quilleryctl -n "not __fish_seen_subcommand_from $commands" -a undo -d 'Restore the last backup'
complete -c quilleryctl -n "not __fish_seen_subcommand_from $commands" -a next -d 'Print when the next sort is due'
complete -c quilleryctl -n "__fish_seen_subcommand_from $commands" -s q -l quiet -d 'Print as little as possible'
complete -c quilleryctl -n '__fish_seen_subcommand_from preview' -s a -l all -d 'Show the whole tree'
complete -c quilleryctl -n '__fish_seen_subcommand_from preview check backups next' -s j -l json -d 'Print JSON for programs'
complete -c quilleryctl -n '__fish_seen_subcommand_from sort' -s n -l dry-run -d 'Only show what a sort would move'
complete -c quilleryctl -n '__fish_seen_subcommand_from sort' -s o -l output -r -F -d 'Write a sorted copy'
complete -c quilleryctl -n "__fish_seen_subcommand_from $commands" -l color -x -a 'always never auto' -d 'Use colours'
complete -c quilleryctl -n '__fish_seen_subcommand_from restore' -l foreign -d 'Restore any bookmark file'
complete -c quilleryctl -n '__fish_seen_subcommand_from preview sort check backups restore undo' -F
complete -c quilleryctl -n '__fish_seen_subcommand_from restore' -a '(quilleryctl backups --quiet 2>/dev/null)'
