module tolmar

go 1.19
