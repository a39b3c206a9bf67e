module example

go 1.19

require tolmar v0.0.0

replace tolmar => ../../bindings/go
